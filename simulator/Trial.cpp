#include "simulator/Trial.h"

#include <algorithm>
#include <deque>
#include <thread>

#include "simulator/IdealReceiver.h"
#include "simulator/PhoneSender.h"

namespace zor::simulator {
namespace {

constexpr double kUsPerSecond = 1e6;

/// A module starts to listen within this time of a phone's run.
constexpr std::int64_t kLatestStartUs = 60'000'000;

/// How many frames an access point holds. When one more arrives, the oldest is dropped.
constexpr std::size_t kMaxHeld = 64;

/// What headers and encryption add to a datagram, bytes: less than this, and constant for a phone.
constexpr std::int64_t kMaxOverhead = 120;

/// One phone as the module observes it.
struct Phone {
  const PhonePlan* plan;
  receiver::MacAddress address;
  std::int32_t overhead;
  IdealReceiver bound;
  bool provisioned = false;
};

class Run {
 public:
  Run(const Scenario& scenario, std::uint64_t seed, receiver::Decoder& decoder)
      : scenario_(scenario),
        decoder_(decoder),
        random_(seed),
        loss_(scenario.radio, random_),
        releases_(scenario.radio, random_) {
    for (const PhonePlan* const plan : scenario.phones) addPhone(*plan);
  }

  Outcome outcome() {
    while (!(boundReached_ && decoderReached_)) {
      Sender& next = earliest();
      if (static_cast<double>(next.channel.time()) > kGiveUpSeconds * kUsPerSecond) break;
      take({next.phone, next.channel.frame()}, next.channel.time());
      next.channel.advance();
    }
    return outcome_;
  }

 private:
  struct Sender {
    std::size_t phone;
    ChannelSender channel;
  };
  struct Sent {
    std::size_t phone;
    PlannedFrame frame;
  };

  void addPhone(const PhonePlan& plan) {
    const auto number = static_cast<std::uint8_t>(phones_.size());
    const auto overhead = static_cast<std::int32_t>(random_.below(kMaxOverhead));
    phones_.push_back({&plan, {0x02, 0, 0, 0, 0, number}, overhead, IdealReceiver(plan)});
    const std::int64_t startUs = scenario_.listens == Listens::anyTime ? random_.below(kLatestStartUs) : 0;
    for (const PlannedChannel& channel : plan.channels) {
      senders_.push_back({phones_.size() - 1, ChannelSender(channel, startUs, random_)});
    }
  }

  Sender& earliest() {
    return *std::min_element(senders_.begin(), senders_.end(), [](const Sender& a, const Sender& b) {
      return a.channel.time() < b.channel.time();
    });
  }

  /// Handles a frame that has reached the access point.
  void take(const Sent& sent, std::int64_t timeUs) {
    const Held held = scenario_.radio.held;
    while (held != Held::nothing && releases_.next() <= timeUs) release();
    if (held == Held::nothing || (held == Held::multicast && !sent.frame.multicast))
      return transmit(sent, timeUs);
    if (held_.size() == kMaxHeld) held_.pop_front();
    held_.push_back(sent);
  }

  void release() {
    for (const Sent& sent : held_) transmit(sent, releases_.next());
    held_.clear();
    releases_.pass();
  }

  /// Puts a frame on the air, after those that were there first.
  void transmit(const Sent& sent, std::int64_t timeUs) {
    const std::int64_t startUs = std::max(timeUs, busyUntilUs_);
    busyUntilUs_ = startUs + airTimeUs(sent.frame.length);
    if (!loss_.loses(startUs)) arrive(sent, busyUntilUs_);
  }

  void arrive(const Sent& sent, std::int64_t timeUs) {
    Phone& phone = phones_[sent.phone];
    phone.bound.observe(sent.frame);
    const auto heard =
        decoder_.observe({timeUs, phone.address, sent.frame.destination, sent.frame.length + phone.overhead});
    if (heard) judge(*heard, phone);
    note(timeUs);
  }

  void judge(const receiver::Credentials& heard, Phone& phone) {
    const Secret& secret = phone.plan->secret;
    const bool sameTexts = heard.ssid == secret.ssid && heard.passPhrase == secret.passPhrase;
    const bool sameAppend = heard.encoding == receiver::Encoding::version3 || heard.append == secret.append;
    if (sameTexts && sameAppend && heard.sender == phone.address) {
      phone.provisioned = true;
    } else {
      outcome_.wrong.push_back(heard);
    }
  }

  void note(std::int64_t timeUs) {
    const double seconds = static_cast<double>(timeUs) / kUsPerSecond;
    if (!boundReached_ &&
        std::all_of(phones_.begin(), phones_.end(), [](const Phone& p) { return p.bound.complete(); })) {
      boundReached_ = true;
      outcome_.boundSeconds = seconds;
    }
    if (!decoderReached_ &&
        std::all_of(phones_.begin(), phones_.end(), [](const Phone& p) { return p.provisioned; })) {
      decoderReached_ = true;
      outcome_.decoderSeconds = seconds;
    }
  }

  const Scenario& scenario_;
  receiver::Decoder& decoder_;
  Random random_;
  LossModel loss_;
  Releases releases_;
  std::vector<Phone> phones_;
  std::vector<Sender> senders_;
  std::deque<Sent> held_;
  std::int64_t busyUntilUs_ = 0;
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
