/** The frames of a leg in rows, and when each byte of the packet was first known; can be zoomed and moved. */
class Timeline {
  static shortest = 0.02;  // Seconds.

  /**
   * `frames` are objects, `completion` may be undefined. `onSelect` takes a frame when one was selected,
   * `onOpen` when it is to be shown in the list.
   */
  constructor(figure, data, leg, picture, frames, completion, onSelect, onOpen) {
    Object.assign(this, {data, leg, picture, frames, completion, onSelect, onOpen});
    this.svg = figure.querySelector(".timeline");
    this.output = figure.querySelector("output");
    this.selected = -1;
    this.pointers = new Map();
    this.first = picture.from;
    this.last = Math.max(picture.to, frames.length > 0 ? frames[frames.length - 1].seconds : 0);
    this.prepareBytes();
    this.setView(picture.from, picture.to);
    this.listen(figure);
  }

  /** The channels of the packet of which more is known, and its fields. */
  prepareBytes() {
    const version = this.completion?.version ?? (this.leg.channels.every((c) => c.channel === "version3") ? 3 : 5);
    this.channels = this.leg.channels.map((channel, i) => ({name: channel.channel, ...this.picture.channels[i]}))
        .filter((channel) => (channel.name === "version3") === (version === 3));
    const highest = Math.max(-1, ...this.channels.map((channel) => channel.known_at.findLastIndex((t) => t !== null)));
    this.bytes = this.leg.bytes_total || highest + 1;
    this.fields = [["bytes", 0]];
    if (!this.completion) return;
    const ssid = version === 3 ? 3 : 4;
    const pass = ssid + this.completion.ssid_length;
    const append = pass + this.completion.pass_phrase_length;
    this.fields = [["header", 0], ["SSID", ssid], ["pass phrase", pass], ["append", append]]
        .filter(([, begin], i, all) => begin < (all[i + 1]?.[1] ?? this.bytes));
  }

  listen(figure) {
    for (const button of figure.querySelectorAll("[data-key]"))
      button.addEventListener("click", () => this.press(button.dataset.key));
    this.svg.addEventListener("keydown", (event) => {
      if (event.ctrlKey || event.metaKey || event.altKey || !this.press(event.key)) return;
      event.preventDefault();
    });
    this.svg.addEventListener("wheel", (event) => this.turnWheel(event), {passive: false});
    this.svg.addEventListener("pointerdown", (event) => {
      this.svg.setPointerCapture(event.pointerId);
      this.pointers.set(event.pointerId, event.offsetX);
      this.moved = this.pointers.size > 1;
    });
    this.svg.addEventListener("pointermove", (event) => this.drag(event));
    this.svg.addEventListener("pointerup", (event) => {
      if (!this.moved) this.selectNear(event.offsetX, event.offsetY);
      this.pointers.delete(event.pointerId);
    });
    this.svg.addEventListener("pointercancel", (event) => this.pointers.delete(event.pointerId));
    new ResizeObserver(() => this.redraw()).observe(this.svg.parentElement);
  }

  /** Does what a key stands for. Returns false for one that stands for nothing. */
  press(key) {
    const span = this.to - this.from;
    const actions = {
      "+": () => this.zoom(0.5), "=": () => this.zoom(0.5), "-": () => this.zoom(2),
      "ArrowLeft": () => this.setView(this.from - span / 5, this.to - span / 5),
      "ArrowRight": () => this.setView(this.from + span / 5, this.to + span / 5),
      "Home": () => this.setView(this.picture.from, this.picture.to),
      "0": () => this.setView(this.first, this.last),
      ",": () => this.step(-1), ".": () => this.step(1),
      "Enter": () => this.selected >= 0 && this.onOpen(this.frames[this.selected]),
    };
    if (!Object.hasOwn(actions, key)) return false;
    actions[key]();
    return true;
  }

  setView(from, to) {
    const span = Math.min(Math.max(to - from, Timeline.shortest), Math.max(this.last - this.first, Timeline.shortest));
    this.from = Math.max(this.first, Math.min(from, this.last - span));
    this.to = this.from + span;
    this.redraw();
  }

  /** `factor` is the new length of time in old ones; `at` stays where it is. */
  zoom(factor, at = (this.from + this.to) / 2) {
    this.setView(at - (at - this.from) * factor, at + (this.to - at) * factor);
  }

  turnWheel(event) {
    const sideways = event.shiftKey ? event.deltaY : event.deltaX;
    if (event.ctrlKey || event.metaKey) {
      this.zoom(Math.exp(event.deltaY / 300), this.timeAt(event.offsetX));
    } else if (Math.abs(sideways) > Math.abs(event.shiftKey ? event.deltaX : event.deltaY)) {
      const seconds = (sideways / (this.right - this.left)) * (this.to - this.from);
      this.setView(this.from + seconds, this.to + seconds);
    } else {
      return;
    }
    event.preventDefault();
  }

  drag(event) {
    const before = this.pointers.get(event.pointerId);
    if (before === undefined || before === event.offsetX) return;
    const others = [...this.pointers].filter(([id]) => id !== event.pointerId).map(([, x]) => x);
    if (others.length > 0) {
      const factor = Math.max(Math.abs(before - others[0]), 1) / Math.max(Math.abs(event.offsetX - others[0]), 1);
      this.zoom(factor, this.timeAt(others[0]));
    } else if (this.moved || Math.abs(event.offsetX - before) > 3) {
      const seconds = this.timeAt(before) - this.timeAt(event.offsetX);
      this.setView(this.from + seconds, this.to + seconds);
    } else {
      return;
    }
    this.moved = true;
    this.pointers.set(event.pointerId, event.offsetX);
  }

  x(seconds) {
    return this.left + ((this.right - this.left) * (seconds - this.from)) / (this.to - this.from);
  }
  timeAt(x) {
    return this.from + ((x - this.left) / (this.right - this.left)) * (this.to - this.from);
  }

  selectNear(x, y) {
    const row = this.picture.rows.find((role) => Math.abs(this.rowAt[role] - y) <= 14);
    let best = -1;
    this.frames.forEach((frame, i) => {
      const distance = Math.abs(this.x(frame.seconds) - x);
      if (frame.role === row && distance < 16 && (best < 0 || distance < Math.abs(this.x(this.frames[best].seconds) - x)))
        best = i;
    });
    if (best >= 0) this.select(best);
  }

  /** To the next frame, or to the first of those that are shown. */
  step(direction) {
    const shown = this.frames.findIndex((frame) => frame.seconds >= this.from);
    const next = this.selected < 0 ? shown : this.selected + direction;
    if (next >= 0 && next < this.frames.length) this.select(next);
  }

  select(index) {
    this.selected = index;
    const frame = this.frames[index];
    const span = this.to - this.from;
    if (frame.seconds < this.from || frame.seconds > this.to)
      this.setView(frame.seconds - span / 2, frame.seconds + span / 2);
    this.output.textContent = `frame ${frame.number}, ${frame.seconds.toFixed(3)} s: ${frame.texts.join(", ")}`;
    this.onSelect(frame);
    this.redraw();
  }

  redraw() {
    if (this.drawing) return;
    this.drawing = requestAnimationFrame(() => {
      this.drawing = 0;
      this.drawAll();
    });
  }

  drawAll() {
    const width = this.svg.clientWidth;
    if (width === 0) return;
    const isNarrow = width < 640;
    this.svg.replaceChildren();
    this.left = isNarrow ? 8 : 170;
    this.right = width - 12;
    let y = 26;
    const top = y;
    this.rowAt = {};
    const axis = draw(this.svg, "g", {});
    for (const role of this.picture.rows) {
      if (isNarrow) y += 18;
      this.drawRow(role, y, isNarrow);
      y += 26;
    }
    if (this.bytes > 0) y = this.drawBytes(y + (isNarrow ? 26 : 10), isNarrow);
    this.drawAxis(axis, top, y);
    this.drawCompletion(top, y);
    if (this.selected >= 0) this.drawSelection();
    this.svg.style.height = `${y + 26}px`;
  }

  drawRow(role, y, isNarrow) {
    const frames = this.frames.filter((frame) => frame.role === role);
    const middle = y + 12;
    this.rowAt[role] = middle;
    draw(this.svg, "rect", {class: "row", x: this.left, y, width: this.right - this.left, height: 23});
    const name = this.data.roles[role];
    draw(this.svg, "text", {x: isNarrow ? 8 : 0, y: isNarrow ? y - 4 : middle + 4}, name);
    draw(this.svg, "text", {class: "quiet end", x: isNarrow ? this.right : this.left - 12, y: isNarrow ? y - 4 : middle + 4},
         frames.length);
    const marks = ["v8", "v7", "v18", "l8 14m0 -14l-8 14"];
    const starts = [[0, -4], [0, 2], [0, -9], [-4, -7]];
    const paths = ["", "", "", ""];
    for (const {seconds, news} of frames) {
      if (seconds < this.from || seconds > this.to) continue;
      const [dx, dy] = starts[news];
      paths[news] += `M${(this.x(seconds) + dx).toFixed(1)} ${middle + dy}${marks[news]}`;
    }
    paths.forEach((d, news) => d && draw(this.svg, "path", {class: this.data.news[news], d}));
  }

  /** A line for each byte, from the moment at which it was known; a mark where each channel first said it. */
  drawBytes(top, isNarrow) {
    const height = Math.max(4, Math.min(12, 240 / this.bytes));
    const y = (byte) => top + (byte + 0.5) * height;
    const isShown = (time) => time !== null && time >= this.from && time <= this.to;
    let known = "";
    for (let byte = 0; byte < this.bytes; ++byte) {
      const times = this.channels.map((channel) => channel.known_at[byte]).filter((time) => time !== null);
      const since = Math.max(Math.min(...times), this.from);
      if (since <= this.to) known += `M${this.x(since).toFixed(1)} ${y(byte)}H${this.right}`;
    }
    draw(this.svg, "path", {class: "known", d: known, style: `stroke-width:${height - 1}`});
    const shapes = {multicast: "m-3 -3h6v6h-6z", broadcast: "m-3 0a3 3 0 1 0 6 0a3 3 0 1 0 -6 0", version3: "m0 -4l4 7h-8z"};
    for (const {name, known_at} of this.channels) {
      const marks = known_at.slice(0, this.bytes).map((time, byte) =>
          isShown(time) ? `M${this.x(time).toFixed(1)} ${y(byte)}${shapes[name]}` : "");
      draw(this.svg, "path", {class: name, d: marks.join("")});
    }
    const bottom = top + this.bytes * height;
    this.drawFields(top, height, isNarrow);
    return bottom + 6;
  }

  drawFields(top, height, isNarrow) {
    if (isNarrow) {
      const names = this.completion ? `: ${this.fields.map(([name]) => name).join(", ")}` : "";
      draw(this.svg, "text", {x: 8, y: top - 6}, `bytes 0 to ${this.bytes - 1}${names}`);
    }
    let free = top;
    for (const [name, begin] of this.fields) {
      const line = top + begin * height;
      draw(this.svg, "path", {class: "grid", d: `M${isNarrow ? this.left : 0} ${line}H${this.right}`});
      if (isNarrow) continue;
      const baseline = Math.max(line, free) + 13;
      draw(this.svg, "text", {x: 0, y: baseline}, name);
      draw(this.svg, "text", {class: "quiet end", x: this.left - 12, y: baseline}, `from ${begin}`);
      free = baseline;
    }
  }

  drawAxis(group, top, bottom) {
    const rough = ((this.to - this.from) * 90) / (this.right - this.left);
    const power = 10 ** Math.floor(Math.log10(rough));
    const distance = [1, 2, 5, 10].find((step) => step * power >= rough) * power;
    const digits = Math.max(0, -Math.floor(Math.log10(distance) + 1e-9));
    for (let mark = Math.ceil(this.from / distance); mark * distance <= this.to; ++mark) {
      const x = this.x(mark * distance);
      draw(group, "path", {class: "grid", d: `M${x} ${top}V${bottom + 5}`});
      const anchor = x < 24 ? "" : x > this.right - 24 ? "end" : "middle";
      draw(group, "text", {class: `quiet ${anchor}`, x, y: bottom + 20}, `${(mark * distance).toFixed(digits)} s`);
    }
  }

  drawCompletion(top, bottom) {
    const seconds = this.completion?.seconds;
    if (seconds === undefined || seconds < this.from || seconds > this.to) return;
    const x = this.x(seconds);
    draw(this.svg, "path", {class: "done", d: `M${x} ${top - 4}V${bottom}`});
    const anchor = x < 90 ? "" : x > this.right - 90 ? "end" : "middle";
    draw(this.svg, "text", {class: `done ${anchor}`, x, y: top - 9}, `\u2713 complete, frame ${this.completion.frame}`);
  }

  drawSelection() {
    const frame = this.frames[this.selected];
    if (frame.seconds < this.from || frame.seconds > this.to) return;
    const [x, y] = [this.x(frame.seconds), this.rowAt[frame.role]];
    draw(this.svg, "rect", {class: "selected", x: x - 7, y: y - 13, width: 14, height: 26, rx: 4});
  }
}
