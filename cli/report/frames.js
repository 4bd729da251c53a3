/** The list of frames, a page at a time. */
class FrameList {
  static rows = 100;

  constructor(details, frames, leftOut) {
    Object.assign(this, {details, frames, page: 0});
    this.body = details.querySelector("tbody");
    this.output = details.querySelector("output");
    this.kind = details.querySelector("select");
    this.search = details.querySelector("input");
    const rest = leftOut > 0 ? `, the first of ${frames.length + leftOut}` : "";
    details.querySelector("summary").textContent = `List of ${count(frames.length, "frame")}${rest}`;
    this.hasSecrets = frames.length > 0 && frames[0].destination !== undefined;
    if (!this.hasSecrets) {
      details.querySelector(".note").textContent =
          "Destinations and lengths are left out, since credentials can be read from them; --show-secrets shows them. " +
          "Values stand halfway between the frames before and after them.";
    }
    const titles = ["Frame", "Seconds", "Kind", "Bytes", "Says", ...(this.hasSecrets ? ["Destination", "Length"] : [])];
    details.querySelector("thead tr").append(...titles.map((title, i) => make("th", i < 2 ? "number" : "", title)));
    for (const name of new Set(frames.map((frame) => frame.kind))) this.kind.append(make("option", "", name));
    const filter = () => this.show(0);
    this.kind.addEventListener("change", filter);
    this.search.addEventListener("input", filter);
    for (const button of details.querySelectorAll("[data-step]"))
      button.addEventListener("click", () => this.show(this.page + Number(button.dataset.step)));
    details.addEventListener("toggle", () => details.open && this.show(this.page));
  }

  cells(frame) {
    const secrets = this.hasSecrets ? [frame.destination, frame.length] : [];
    return [frame.number, frame.seconds.toFixed(3), frame.kind, frame.bytes, frame.says, ...secrets];
  }

  found() {
    const wanted = this.search.value.toLowerCase();
    return this.frames.filter((frame) => (!this.kind.value || frame.kind === this.kind.value) &&
                                         this.cells(frame).join(" ").toLowerCase().includes(wanted));
  }

  show(page) {
    const found = this.found();
    const pages = Math.max(1, Math.ceil(found.length / FrameList.rows));
    this.page = Math.min(Math.max(page, 0), pages - 1);
    const begin = this.page * FrameList.rows;
    this.body.replaceChildren(...found.slice(begin, begin + FrameList.rows).map((frame) => this.makeRow(frame)));
    this.output.textContent = `${count(found.length, "frame")}, page ${this.page + 1} of ${pages}`;
    const [previous, next] = this.details.querySelectorAll("[data-step]");
    previous.disabled = this.page === 0;
    next.disabled = this.page === pages - 1;
  }

  makeRow(frame) {
    const row = make("tr", frame === this.chosen ? "chosen" : "");
    this.cells(frame).forEach((cell, i) => row.append(make("td", i < 2 ? "number" : "", String(cell))));
    return row;
  }

  choose(frame) {
    this.chosen = frame;
    if (this.details.open) this.show(this.page);
  }

  /** Opens the list at a frame. */
  open(frame) {
    this.details.open = true;
    this.kind.value = this.search.value = "";
    this.show(Math.floor(this.frames.indexOf(frame) / FrameList.rows));
    this.details.querySelector(".scroll").focus();
    this.body.querySelector(".chosen")?.scrollIntoView({block: "center"});
  }
}
