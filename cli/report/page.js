/** A frame of the data as an object. */
function readFrame(data, [number, seconds, role, news, offset, destination, length]) {
  const isPair = offset >= 0 && data.roles[role].endsWith("data");
  const bytes = offset < 0 ? "" : isPair ? `${offset}, ${offset + 1}` : String(offset);
  const says = news > 0 ? data.news[news] : "";
  const kind = data.roles[role];
  const texts = [kind, ...(bytes ? [`byte${isPair ? "s" : ""} ${bytes}`] : []), ...(says ? [says] : [])];
  return {number, seconds, role, news, kind, bytes, says, texts, destination, length};
}

function makeLeg(data, sender, leg, picture) {
  const section = document.getElementById("leg-template").content.firstElementChild.cloneNode(true);
  section.querySelector("h3").textContent = picture.text;
  const retries = leg.retries > 0 ? `, ${leg.retries} retries not counted` : "";
  const pace = leg.pace === null ? "" : `, pace ${leg.pace}`;
  const kept = picture.left_out > 0 ? `; the pictures and the list show the first ${picture.frames.length}` : "";
  section.querySelector(".facts").textContent =
      `${count(leg.frames, "frame")} in ${leg.seconds.toFixed(2)} s${retries}, ` +
      `${leg.bytes_known} of ${leg.bytes_total || "?"} bytes, CRC ${leg.crc}${pace}${kept}`;
  const channels = leg.channels.map((channel, i) => makeChannel(channel, picture.channels[i]));
  section.querySelector(".cards").append(...channels);

  const frames = picture.frames.map((values) => readFrame(data, values));
  const completion = data.completed.find((event) => event.sender === sender.sender && event.leg === leg.leg);
  const list = new FrameList(section.querySelector("details"), frames, picture.left_out);
  section.timeline = new Timeline(section.querySelector("figure"), data, leg, picture, frames, completion,
                                  (frame) => list.choose(frame), (frame) => list.open(frame));
  return section;
}

function makeSender(data, sender, index) {
  const section = make("section", "", make("h2", "", `sender ${sender.sender}`));
  section.id = `sender-${index}`;
  const legs = sender.legs.map((leg) => leg.leg);
  const credentials = data.completed.filter((event) => event.sender === sender.sender).map((completion) =>
      makeCredentials(completion, data.pictures[index][legs.indexOf(completion.leg)].text));
  section.append(make("div", "cards", ...credentials));
  section.append(...sender.legs.map((leg, i) => makeLeg(data, sender, leg, data.pictures[index][i])));
  return section;
}

const data = JSON.parse(document.getElementById("data").textContent);
const source = data.started.file ?? data.started.interface;
document.title = `${source} \u2013 zorctl decode`;
document.querySelector("h1").append(make("bdi", "", source), make("span", "quiet", `, ${data.started.link_layer}`));
showVerdicts(data, document.getElementById("verdict"));
document.getElementById("senders").append(...data.senders.map((sender, i) => makeSender(data, sender, i)));
