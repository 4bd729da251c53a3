/** Makes an element with texts or other elements in it. */
function make(tag, className, ...content) {
  const element = document.createElement(tag);
  if (className) element.className = className;
  element.append(...content);
  return element;
}

/** Adds an element to a picture. */
function draw(parent, tag, attributes, text) {
  const element = document.createElementNS("http://www.w3.org/2000/svg", tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  if (text !== undefined) element.textContent = text;
  parent.append(element);
  return element;
}

/** A list of names and what they are; those without a value are left out. */
function makeFacts(facts) {
  const list = make("dl");
  for (const [name, value] of facts) {
    if (value === null || value === undefined) continue;
    list.append(make("dt", "", name), make("dd", "", value instanceof Node ? value : String(value)));
  }
  return list;
}

function count(number, name) {
  return `${number} ${name}${number === 1 ? "" : "s"}`;
}

/** What was found about one sender. */
function makeVerdict(sender, index) {
  const isComplete = sender.verdict === "complete";
  const link = make("a", "", `sender ${sender.sender}`);
  link.href = `#sender-${index}`;
  const state = make("span", "state", isComplete ? "\u2713 complete" : "\u2717 not complete");
  const article = make("article", isComplete ? "complete" : "", make("h2", "", link, ": ", state));
  article.append(make("p", "text", sender.findings[0].text));
  const others = sender.findings.slice(1).map((finding) => make("li", "", `also: ${finding.text}`));
  if (others.length > 0) article.append(make("ul", "", ...others));
  return article;
}

function showVerdicts(data, place) {
  place.replaceChildren(...data.senders.map(makeVerdict));
  const end = data.finished;
  if (end.verdict) place.append(make("article", "", make("p", "text", end.verdict)));
  const complete = new Set(data.completed.map((completion) => completion.sender)).size;
  if (data.senders.length > 0) {
    const senders = count(data.senders.length, "sender");
    place.append(make("p", "quiet", `${count(end.frames, "frame")}, ${senders}, ${complete} complete`));
  }
  if (end.problem) place.append(make("p", "problem", end.problem));
}

/** Credentials that were heard whole, as far as they are shown. */
function makeCredentials(completion, legText) {
  const text = (name) => make("bdi", "", completion[name] ?? completion[`${name}_masked`]);
  const ssid = make("span", "", text("ssid"), ` (${count(completion.ssid_length, "byte")})`);
  const pass = make("span", "", text("pass_phrase"), ` (${count(completion.pass_phrase_length, "byte")})`);
  const append = completion.append ?? count(completion.append_length, "byte");
  return make("div", "credentials", makeFacts([
    ["Complete", `${completion.seconds.toFixed(3)} s, with frame ${completion.frame}, ${legText}`],
    ["Version", completion.version],
    ["SSID", ssid],
    ["Pass phrase", pass],
    ["Append bytes", completion.append_length > 0 ? append : null],
  ]));
}

/** How often frames came so many milliseconds after the one before. */
function drawGaps(parent, gaps) {
  const total = gaps.reduce((sum, [, number]) => sum + number, 0);
  if (total === 0) return;
  let seen = 0;
  const usual = gaps.find(([, number]) => (seen += number) >= 0.97 * total)[0];
  const end = Math.max(20, Math.ceil((usual * 1.15) / 10) * 10);
  const highest = Math.max(...gaps.map(([, number]) => number));
  const longer = gaps.reduce((sum, [ms, number]) => sum + (ms > end ? number : 0), 0);
  const [width, height] = [300, 66];
  const svg = draw(parent, "svg", {viewBox: `0 0 ${width} 88`, role: "img", preserveAspectRatio: "xMinYMin"});
  const x = (ms) => 8 + ((width - 16) * ms) / end;
  let bars = "";
  for (const [ms, number] of gaps) {
    if (ms <= end) bars += `M${x(ms).toFixed(1)} ${height}v${(-Math.max(3, (number / highest) * 46)).toFixed(1)}`;
  }
  draw(svg, "text", {class: "quiet", x: 0, y: 11}, "from frame to frame");
  draw(svg, "path", {class: "grid", d: `M0 ${height}.5H${width}`});
  draw(svg, "path", {class: "bars", d: bars, "stroke-width": Math.max(1.5, (width / end) * 0.7)});
  draw(svg, "text", {class: "quiet", x: 0, y: 84}, "0");
  draw(svg, "text", {class: "quiet middle", x: width / 2, y: 84}, longer > 0 ? `${longer} longer` : "");
  draw(svg, "text", {class: "quiet end", x: width, y: 84}, `${end} ms`);
  const often = gaps.find(([, number]) => number === highest)[0];
  svg.setAttribute("aria-label", `Most often ${often} ms from frame to frame; ${longer} longer than ${end} ms`);
}

function makeChannel(channel, picture) {
  let loss = null;
  if (channel.loss !== null) {
    const percent = Math.round(channel.loss * 1000) / 10;
    const bar = make("div", "bar", make("div"));
    bar.firstChild.style.width = `${Math.max(0, percent)}%`;
    loss = make("div", "", `${percent} %`, bar);
  }
  const name = channel.channel === "version3" ? "version 3" : channel.channel;
  const pause = channel.pause_ms === null ? "" : `, pause ${channel.pause_ms} ms`;
  const spacing = channel.in_bursts ? "in bursts" :
      channel.interval_ms === null ? null : `every ${channel.interval_ms} ms${pause}`;
  const assumed = channel.length_base_assumed ? " assumed" : "";
  const base = channel.length_base === null ? "" :
      `: base ${channel.length_base}${assumed}, overhead ${channel.overhead}, encryption ${channel.encryption}`;
  const syncs = channel.sync_length === null ? "none" : `of ${channel.sync_length} bytes${base}`;
  const both = make("div", "both", makeFacts([
    ["Frames", `${channel.frames} in ${count(channel.cycles, "cycle")}`],
    ["Lost", loss],
    ["Spacing", spacing],
    ["Syncs", syncs],
    ["Contradictions", channel.contradictions || null],
  ]));
  drawGaps(both, picture.gaps);
  return make("div", "channel", make("h4", "", name), both);
}
