#include "simulator/Trial.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <thread>

#include "receiver/decoder/Crc8.h"
#include "simulator/AccessPoint.h"
#include "simulator/IdealReceiver.h"
#include "simulator/Sources.h"

namespace zor::simulator {
namespace {

constexpr double kUsPerSecond = 1e6;

// A hopping module listens on each of the channels 1, 6 and 11 for a quarter of a second.
constexpr std::int64_t kDwellUs = 250'000;
constexpr std::int64_t kHopCycleUs = 3 * kDwellUs;

/// Longer than anything is heard before time 0.
constexpr std::int64_t kManyHopsUs = 1000 * kHopCycleUs;

double secondsOf(std::int64_t us) {
  return static_cast<double>(us) / kUsPerSecond;
}

/// The bytes of a packet that its CRC covers.
std::string coveredBytes(receiver::Encoding encoding, const Secret& secret) {
  const std::string texts = secret.ssid + secret.passPhrase;
  if (encoding == receiver::Encoding::version5)
    return texts + std::string(secret.append.begin(), secret.append.end());
  return std::string{static_cast<char>(secret.ssid.size()), static_cast<char>(secret.passPhrase.size())} +
         texts;
}

/// In how many bytes they differ; bytes that only one of them has count.
std::size_t countDifferent(std::string_view a, std::string_view b) {
  const std::size_t common = std::min(a.size(), b.size());
  std::size_t different = std::max(a.size(), b.size()) - common;
  for (std::size_t i = 0; i < common; ++i) different += a[i] != b[i] ? 1 : 0;
  return different;
}

/// What the module knows of a run.
struct Heard {
  IdealReceiver bound;
  bool provisioned = false;
};

class Run {
 public:
  Run(const Scenario& scenario, std::uint64_t seed, receiver::Decoder& decoder)
      : environment_(scenario.environment),
        secondsAfter_(scenario.secondsAfter),
        decoder_(decoder),
        random_(seed),
        loss_(environment_.radio, random_),
        accessPoint_(environment_, random_),
        runs_(makeRuns(scenario, random_)),
        sources_(makeSources(scenario, runs_, random_)),
        hopUs_(kManyHopsUs + random_.below(kHopCycleUs)) {
    for (const PhoneRun& run : runs_) {
      heard_.push_back({IdealReceiver(*run.plan)});
      if (run.awaited) startUs_ = std::max(startUs_, run.times.startUs);
    }
  }

  Outcome outcome() {
    decoder_.setRejectionListener([this](const receiver::Rejection& rejection) {
      if (isSent(rejection.credentials)) return;
      outcome_.stoppedByCrc = true;
      outcome_.stoppedByLuck = outcome_.stoppedByLuck || mayHavePassed(rejection);
    });
    const double giveUpSeconds = secondsOf(startUs_) + kGiveUpSeconds;
    while (secondsOf(nowUs_) < std::min(endSeconds_, giveUpSeconds)) {
      FrameSource& source = earliest();
      nowUs_ = source.next().timeUs;
      count(source.next());
      accessPoint_.take(source.next(), [this](const SentFrame& sent, std::int64_t fromUs, std::int64_t toUs) {
        if (listensAt(fromUs) && !loss_.loses(fromUs, sent.frame.length)) hear(sent, toUs);
      });
      source.advance();
    }
    decoder_.setRejectionListener({});
    return outcome_;
  }

 private:
  FrameSource& earliest() {
    return **std::min_element(sources_.begin(), sources_.end(), [](const auto& a, const auto& b) {
      return a->next().timeUs < b->next().timeUs;
    });
  }

  void count(const SentFrame& sent) {
    if (decoderReached_ || sent.run == kNoRun) return;
    ++outcome_.framesSent;
    outcome_.airSeconds += secondsOf(airTimeUs(sent.frame.length));
  }

  bool listensAt(std::int64_t timeUs) const {
    return !environment_.hopping || (timeUs + hopUs_) % kHopCycleUs < kDwellUs;
  }

  void hear(const SentFrame& sent, std::int64_t timeUs) {
    if (sent.run != kNoRun) heard_[sent.run].bound.observe(sent.frame);
    const auto credentials = decoder_.observe(
        {timeUs, sent.from.address, sent.frame.destination, sent.frame.length + sent.from.overhead});
    if (credentials) judge(*credentials, sent.from.address);
    note(timeUs);
  }

  void judge(const receiver::Credentials& credentials, const receiver::MacAddress& address) {
    for (std::size_t i = 0; i < runs_.size(); ++i) {
      if (credentials.sender != address || !isOf(runs_[i], credentials)) continue;
      heard_[i].provisioned = true;
      return;
    }
    outcome_.wrong.push_back(credentials);
  }

  /// True when the sender of this run sends these credentials in it.
  static bool isOf(const PhoneRun& run, const receiver::Credentials& credentials) {
    const Secret& secret = run.plan->secret;
    const bool sameAppend =
        credentials.encoding == receiver::Encoding::version3 || credentials.append == secret.append;
    return credentials.sender == run.from.address && credentials.ssid == secret.ssid &&
           credentials.passPhrase == secret.passPhrase && sameAppend;
  }

  bool isSent(const receiver::Credentials& credentials) const {
    return std::any_of(runs_.begin(), runs_.end(),
                       [&](const PhoneRun& run) { return isOf(run, credentials); });
  }

  /// False when the CRC was certain to stop these credentials: they are those of a run but for one byte.
  bool mayHavePassed(const receiver::Rejection& rejection) const {
    const receiver::Credentials& read = rejection.credentials;
    const std::string readBytes = coveredBytes(read.encoding, {read.ssid, read.passPhrase, read.append}) +
                                  static_cast<char>(rejection.crc);
    return std::none_of(runs_.begin(), runs_.end(), [&](const PhoneRun& run) {
      std::string sent = coveredBytes(read.encoding, run.plan->secret);
      const auto* const bytes = reinterpret_cast<const std::uint8_t*>(sent.data());
      sent += static_cast<char>(receiver::crc8(bytes, sent.size()));
      return read.sender == run.from.address && countDifferent(readBytes, sent) <= 1;
    });
  }

  void note(std::int64_t timeUs) {
    const double seconds = secondsOf(std::max<std::int64_t>(timeUs - startUs_, 0));
    if (!boundReached_ && forAllAwaited([](const Heard& heard) { return heard.bound.complete(); })) {
      boundReached_ = true;
      outcome_.boundSeconds = seconds;
    }
    if (!decoderReached_ && forAllAwaited([](const Heard& heard) { return heard.provisioned; })) {
      decoderReached_ = true;
      outcome_.decoderSeconds = seconds;
    }
    if (boundReached_ && decoderReached_) {
      endSeconds_ = std::min(endSeconds_, secondsOf(timeUs) + secondsAfter_);
    }
  }

  template <class Predicate>
  bool forAllAwaited(Predicate&& predicate) const {
    for (std::size_t i = 0; i < runs_.size(); ++i) {
      if (runs_[i].awaited && !predicate(heard_[i])) return false;
    }
    return true;
  }

  const Environment& environment_;
  double secondsAfter_;
  receiver::Decoder& decoder_;
  Random random_;
  LossModel loss_;
  AccessPoint accessPoint_;
  std::vector<PhoneRun> runs_;
  std::vector<std::unique_ptr<FrameSource>> sources_;
  std::vector<Heard> heard_;
  std::int64_t hopUs_;
  std::int64_t startUs_ = 0;
  std::int64_t nowUs_ = 0;
  double endSeconds_ = 2 * kGiveUpSeconds;
  bool boundReached_ = false;
  bool decoderReached_ = false;
  Outcome outcome_;
};

}  // namespace

Outcome runTrial(const Scenario& scenario, std::uint64_t seed, receiver::Decoder& decoder) {
  decoder.reset();
  return Run(scenario, seed, decoder).outcome();
}

std::vector<Outcome> runTrials(const Scenario& scenario, int runs, std::uint64_t firstSeed) {
  std::vector<Outcome> outcomes(static_cast<std::size_t>(runs));
  const std::size_t threadCount = std::max(1U, std::thread::hardware_concurrency());
  std::vector<std::thread> threads;
  for (std::size_t first = 0; first < threadCount; ++first) {
    threads.emplace_back([&, first] {
      receiver::Decoder decoder;
      for (std::size_t run = first; run < outcomes.size(); run += threadCount) {
        outcomes[run] = runTrial(scenario, firstSeed + run, decoder);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  return outcomes;
}

}  // namespace zor::simulator
