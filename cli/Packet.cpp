#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "cli/Command.h"
#include "cli/CredentialOptions.h"
#include "cli/Ending.h"
#include "cli/ExitCode.h"
#include "cli/FrameMeaning.h"
#include "cli/Hex.h"
#include "cli/Interrupt.h"
#include "cli/Output.h"
#include "cli/PacketFields.h"
#include "cli/Payload.h"
#include "simulator/RecordedSchedule.h"

namespace zor::cli {
namespace {

struct PacketOptions : CommonOptions, CredentialOptions {
  std::optional<std::string> append;
  bool version3 = false;
};

using Bytes = std::vector<std::uint8_t>;

SenderInputs makeInputs(const Payload& payload) {
  SenderInputs inputs;
  payload.ssid.copy(inputs.ssid, sizeof inputs.ssid - 1);
  payload.passPhrase.copy(inputs.password, sizeof inputs.password - 1);
  std::copy(payload.append.begin(), payload.append.end(), inputs.appendData);
  inputs.appendLen = static_cast<std::int32_t>(payload.append.size());
  return inputs;
}

Bytes buildVersion5(const SenderInputs& inputs) {
  Bytes bytes(kZorPacketV5BufferSize);
  const std::int32_t length =
      ZorBuildPacketSmartConfigV5(bytes.data(), inputs.ssid, inputs.password, inputs.appendData,
                                  static_cast<std::uint32_t>(inputs.appendLen));
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

Bytes buildVersion3(const SenderInputs& inputs) {
  Bytes bytes(kZorPacketV3BufferSize);
  const std::int32_t length = ZorBuildPacketSmartConfigV3(bytes.data(), inputs.ssid, inputs.password);
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

std::string leftAligned(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size()), ' ');
  return text + "  ";
}

std::string rightAligned(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text + "  ";
}

std::string fieldRow(const std::string& offset, const std::string& bytes, const std::string& meaning) {
  constexpr std::size_t kOffsetWidth = 6;
  constexpr std::size_t kBytesWidth = 23;
  const std::string start = rightAligned(offset, kOffsetWidth);
  return meaning.empty() ? start + bytes : start + leftAligned(bytes, kBytesWidth) + meaning;
}

/// Rows of eight bytes, the first with the field's meaning.
void showField(Output& output, const PacketField& field) {
  constexpr std::size_t kBytesInRow = 8;
  std::string bytes;
  for (std::size_t i = 0; i < field.bytes.size(); ++i) {
    bytes += toHex({field.bytes[i]});
    const bool rowEnds = i % kBytesInRow == kBytesInRow - 1 || i + 1 == field.bytes.size();
    if (!rowEnds) {
      bytes += ' ';
      continue;
    }
    const std::size_t rowStart = i - i % kBytesInRow;
    output.reportText(fieldRow(std::to_string(field.offset + rowStart), bytes,
                               rowStart == 0 ? field.meaning : std::string{}));
    bytes.clear();
  }
  output.reportJson({{"event", "field"},
                     {"field", field.name},
                     {"offset", field.offset},
                     {"bytes", toHex(field.bytes)},
                     {"meaning", field.meaning}});
}

void showPacket(Output& output, const Bytes& packet, PacketVersion version) {
  const std::string name = version == PacketVersion::version5 ? "version 5" : "version 3";
  output.report(name + " packet, " + std::to_string(packet.size()) + " bytes",
                {{"event", "packet"}, {"encoding", name}, {"bytes", toHex(packet)}});
  output.reportText(fieldRow("OFFSET", "BYTES", "MEANING"));
  for (const PacketField& field : packetFields(packet, version)) showField(output, field);
}

std::string frameRow(const std::string& time, const std::string& group, const std::string& length,
                     const std::string& seen, const std::string& meaning) {
  return rightAligned(time, 6) + leftAligned(group, 15) + rightAligned(length, 6) + leftAligned(seen, 17) +
         meaning;
}

/// Shows one cycle of a channel. `meaningOf` reads a frame.
template <class MeaningOf>
void showCycle(Output& output, const std::string& channel, const simulator::RecordedSchedule& cycle,
               const MeaningOf& meaningOf) {
  output.report(
      "\n" + channel + " channel, one cycle of " + std::to_string(cycle.periodMs) + " ms",
      {{"event", "cycle"}, {"channel", channel}, {"ms", cycle.periodMs}, {"frames", cycle.frames.size()}});
  output.reportText(frameRow("MS", "DESTINATION", "LENGTH", "DESTINATION SEEN", "MEANING"));
  for (const simulator::ScheduledFrame& frame : cycle.frames) {
    const FrameMeaning meaning = meaningOf(frame);
    const std::string seen = destinationSeen(frame.destination);
    Json event = {{"event", "frame"},       {"channel", channel},
                  {"ms", frame.timeMs},     {"destination", frame.destination},
                  {"length", frame.length}, {"destination_seen", seen}};
    event.update(meaning.keys);
    output.report(frameRow(std::to_string(frame.timeMs), frame.destination, std::to_string(frame.length),
                           seen, meaning.text),
                  event);
  }
}

void showVersion5(Output& output, const SenderInputs& inputs) {
  const Bytes packet = buildVersion5(inputs);
  showPacket(output, packet, PacketVersion::version5);
  s_ZorSmart5_McLoopRepeat = 1;  // A block is one cycle then.
  s_ZorSmart5_BcLoopRepeat = 1;
  showCycle(output, "multicast", simulator::recordMulticast(inputs),
            [&](const simulator::ScheduledFrame& frame) { return multicastMeaning(frame, packet.size()); });
  showCycle(output, "broadcast", simulator::recordBroadcast(inputs), broadcastMeaning);
}

void showVersion3(Output& output, const SenderInputs& inputs) {
  const Bytes packet = buildVersion3(inputs);
  showPacket(output, packet, PacketVersion::version3);
  showCycle(output, "multicast", simulator::recordVersion3(inputs),
            [&](const simulator::ScheduledFrame& frame) { return multicastMeaning(frame, packet.size()); });
}

ExitCode showPacketAndCycles(const PacketOptions& options) {
  Payload payload;
  payload.ssid = options.ssid;
  if (options.append) payload.append = fromHex(*options.append);
  checkLengths(payload);
  const Interrupt interrupt;
  payload.passPhrase = readPassPhrase(options, interrupt);
  checkLengths(payload);
  Output output(options, interrupt);
  const SenderInputs inputs = makeInputs(payload);
  options.version3 ? showVersion3(output, inputs) : showVersion5(output, inputs);
  return finish(output, {});
}

}  // namespace

Command addPacket(CLI::App& app) {
  const auto options = std::make_shared<PacketOptions>();
  CLI::App* const command =
      app.add_subcommand("packet",
                         "Show what a run would send, and send nothing: the packet's bytes, the pass phrase "
                         "among them, and the frames of one cycle");
  addCredentialOptions(*command, *options);
  CLI::Option* const append = addTextOption(*command, "--append", options->append,
                                            "Up to 16 bytes of application data in hexadecimal", "HEX");
  command->add_flag("--v3", options->version3, "Show version 3 instead of version 5")->excludes(append);
  addJsonOption(*command, *options);
  command->footer("Example: zorctl packet --ssid home --pass 'secret!!' --append 01b361");
  return {command, [options] { return showPacketAndCycles(*options); }};
}

}  // namespace zor::cli
