// Writes a capture file of phones that provision, in virtual time; tests/captures/make runs it.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "simulator/CaptureFile.h"
#include "simulator/PhonePlan.h"
#include "simulator/Radio.h"
#include "simulator/Random.h"

namespace {

using namespace zor::simulator;

struct Options {
  std::string file, ssid = "Home", passPhrase = "secret!!";
  CaptureLink link = CaptureLink::radiotap;
  Encryption encryption = Encryption::ccmp;
  Encryption later = Encryption::ccmp;  ///< From `laterSeconds` on.
  double laterSeconds = 1e9;
  bool asPcapng = false;
  std::string pace = "default";
  std::vector<int> values;  ///< Pacing values instead of a named pace.
  double seconds = 3, loss = 0, retries = 0;
  int holdMs = 0, phones = 1;
  bool sameAddress = false, version3 = false;
  bool noMulticast = false, noBroadcast = false, onlyVersion3 = false, noSyncs = false;
  bool fromPhone = true, copies = false, copiesWithoutMulticast = false, aggregated = false,
       strangers = false;
  int multicastShift = 0;
  int cut = 0;  ///< Bytes to leave out at the end of the file.
};

constexpr double kMeanDelayUs = 300;  ///< By which a frame leaves late.

bool isVersion3(const PlannedFrame& frame) {
  const int mark = frame.destination[3];
  return frame.multicast && (mark == 90 || mark == 79 || mark == 82);
}

bool isSync(const PlannedFrame& frame, int multicastBase, int broadcastBase) {
  if (frame.multicast) return frame.destination[3] == 122 && frame.length == multicastBase;
  const int offset = frame.length - broadcastBase;
  return offset == 0 || offset == 1 || offset == 358;
}

class Maker {
 public:
  explicit Maker(const Options& options) : options_(options), random_(1), releases_(radio_, random_) {
    radio_.holdUs = options.holdMs * 1000;
    releases_ = Releases(radio_, random_);
  }

  std::vector<AirFrame> frames() {
    Pace pace = ZorFindPace(options_.pace)->values;
    for (std::size_t i = 0; i < options_.values.size(); ++i)
      pace[i] = static_cast<std::uint8_t>(options_.values[i]);
    for (int phone = 0; phone < options_.phones; ++phone) addPhone(phone, pace);
    if (options_.strangers) addStrangers();
    std::stable_sort(frames_.begin(), frames_.end(),
                     [](const AirFrame& a, const AirFrame& b) { return a.timeUs < b.timeUs; });
    return frames_;
  }

 private:
  void addPhone(int number, const Pace& pace) {
    const Secret secret = number == 0 ? Secret{options_.ssid, options_.passPhrase, {}}
                                      : Secret{"Neighbour", "another phrase", {}};
    Channels channels;
    channels.version3 = options_.version3 || options_.onlyVersion3;
    const PhonePlan plan = makePlan(secret, pace, channels);
    const auto last = static_cast<std::uint8_t>(options_.sameAddress ? 1 : 1 + number);
    const auto endUs = static_cast<std::int64_t>(options_.seconds * 1e6);
    for (const PlannedChannel& channel : plan.channels) {
      std::int64_t timeUs = 0;
      for (std::size_t sent = 0; timeUs < endUs; ++sent) {
        const PlannedFrame& frame = channel.frames[sent % channel.frames.size()];
        const auto block = static_cast<std::int64_t>(sent / channel.frames.size());
        const auto delayUs = static_cast<std::int64_t>(random_.exponential(kMeanDelayUs));
        timeUs = std::max(timeUs, block * channel.periodUs + frame.timeUs + delayUs);
        if (timeUs < endUs && isSent(frame, pace)) send(frame, timeUs, {2, 0, 0, 0, 0, last});
      }
    }
  }

  bool isSent(const PlannedFrame& frame, const Pace& pace) const {
    if (options_.onlyVersion3 && !isVersion3(frame)) return false;
    if (options_.noSyncs && isSync(frame, pace[0], pace[7])) return false;
    return frame.multicast ? !options_.noMulticast : !options_.noBroadcast;
  }

  void send(const PlannedFrame& planned, std::int64_t timeUs, const zor::receiver::MacAddress& source) {
    AirFrame frame;
    frame.timeUs = timeUs;
    frame.source = source;
    frame.destination = planned.destination;
    frame.length = planned.length + (planned.multicast ? options_.multicastShift : 0);
    frame.sequence = sequence_++ & 0xfffU;
    frame.encryption =
        static_cast<double>(timeUs) >= options_.laterSeconds * 1e6 ? options_.later : options_.encryption;
    if (options_.fromPhone) addSent(frame);
    if (!options_.copies || (options_.copiesWithoutMulticast && planned.multicast)) return;
    frame.fromAccessPoint = true;
    frame.timeUs = releases_.after(timeUs) + airTimeUs(planned.length);
    if (options_.holdMs > 0) frame.timeUs = std::max(frame.timeUs, lastCopyUs_ + airTimeUs(planned.length));
    lastCopyUs_ = std::max(lastCopyUs_, frame.timeUs);
    if (!isLost()) frames_.push_back(frame);
  }

  /// The phone's own frame: with QoS, and acknowledged, so that it may be sent again.
  void addSent(AirFrame frame) {
    frame.hasQos = true;
    frame.isAggregate = options_.aggregated;
    if (!isLost()) frames_.push_back(frame);
    if (random_.fraction() >= options_.retries) return;
    frame.isRetry = true;
    frame.timeUs += 400;
    if (!isLost()) frames_.push_back(frame);
  }

  /// Broadcasts and multicasts of other devices.
  void addStrangers() {
    for (int i = 0; i < 200; ++i) {
      AirFrame frame;
      frame.timeUs = random_.below(static_cast<std::int64_t>(options_.seconds * 1e6));
      frame.source = {2, 0, 0, 0, 1, static_cast<std::uint8_t>(random_.below(10))};
      frame.destination = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
      if (random_.below(2) == 0) frame.destination = {1, 0, 0x5e, 127, 255, 250};
      frame.length = static_cast<std::int32_t>(40 + random_.below(300));
      frame.fromAccessPoint = true;
      frame.encryption = options_.encryption;
      frames_.push_back(frame);
    }
  }

  bool isLost() { return random_.fraction() < options_.loss; }

  const Options& options_;
  Random random_;
  RadioConditions radio_;
  Releases releases_;
  std::vector<AirFrame> frames_;
  std::uint16_t sequence_ = 0;
  std::int64_t lastCopyUs_ = 0;
};

void addOptions(CLI::App& app, Options& options) {
  static const std::map<std::string, CaptureLink> kLinks = {{"ethernet", CaptureLink::ethernet},
                                                            {"cooked1", CaptureLink::cooked1},
                                                            {"cooked2", CaptureLink::cooked2},
                                                            {"raw", CaptureLink::rawIp},
                                                            {"wifi", CaptureLink::wifi},
                                                            {"radiotap", CaptureLink::radiotap},
                                                            {"ppi", CaptureLink::ppi}};
  static const std::map<std::string, Encryption> kCiphers = {{"none", Encryption::none},
                                                             {"wep", Encryption::wep},
                                                             {"tkip", Encryption::tkip},
                                                             {"ccmp", Encryption::ccmp}};
  app.add_option("FILE", options.file)->required();
  app.add_option("--ssid", options.ssid, "Of the first phone");
  app.add_option("--pass", options.passPhrase, "Of the first phone");
  app.add_option("--link", options.link)->transform(CLI::CheckedTransformer(kLinks));
  app.add_option("--cipher", options.encryption)->transform(CLI::CheckedTransformer(kCiphers));
  app.add_option("--later-cipher", options.later)->transform(CLI::CheckedTransformer(kCiphers));
  app.add_option("--later", options.laterSeconds, "When the cipher changes, seconds");
  app.add_flag("--pcapng", options.asPcapng);
  const auto isPace = [](const std::string& name) {
    return ZorFindPace(name) != nullptr ? std::string() : "no such pace: " + name;
  };
  app.add_option("--pace", options.pace)->check(isPace);
  app.add_option("--values", options.values, "Pacing values")->delimiter(',')->expected(14);
  app.add_option("--seconds", options.seconds);
  app.add_option("--loss", options.loss, "Share of the frames, 0 to 1");
  app.add_option("--retries", options.retries, "Share of the phone's frames that are sent twice");
  app.add_option("--hold", options.holdMs, "The access point releases its copies this often, milliseconds");
  app.add_option("--phones", options.phones);
  app.add_flag("--same-address", options.sameAddress, "All phones have one address");
  app.add_flag("--mix-v3", options.version3);
  app.add_flag("--only-v3", options.onlyVersion3);
  app.add_flag("--no-multicast", options.noMulticast);
  app.add_flag("--no-broadcast", options.noBroadcast);
  app.add_flag("--no-syncs", options.noSyncs);
  app.add_flag("!--no-phone", options.fromPhone, "Only the access point is heard");
  app.add_flag("--copies", options.copies, "The access point is heard too");
  app.add_flag("--copies-without-multicast", options.copiesWithoutMulticast);
  app.add_flag("--aggregated", options.aggregated, "The phone's frames are A-MSDUs");
  app.add_flag("--strangers", options.strangers, "Other devices send too");
  app.add_option("--multicast-shift", options.multicastShift, "What is added to the lengths of multicasts");
  app.add_option("--cut", options.cut, "Bytes to leave out at the end");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Writes a capture file of phones that provision");
  Options options;
  addOptions(app, options);
  CLI11_PARSE(app, argc, argv);
  CaptureFile file(options.file, options.link, options.asPcapng);
  for (const AirFrame& frame : Maker(options).frames()) file.write(frame);
  if (!file.close()) {
    std::fprintf(stderr, "%s cannot be written\n", options.file.c_str());
    return 1;
  }
  if (options.cut > 0) {
    const auto size = std::filesystem::file_size(options.file);
    std::filesystem::resize_file(options.file, size - static_cast<std::uintmax_t>(options.cut));
  }
  return 0;
}
