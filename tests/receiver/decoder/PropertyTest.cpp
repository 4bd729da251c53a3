#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <deque>
#include <random>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "ZOR/discovery/RecordTable.h"
#include "tests/support/RunOnAir.h"
#include "tests/support/SlowScanners.h"

namespace {

/// Up to `most` bytes, none of them the NUL that would end a text.
std::string anyText(std::size_t most, char first = 1) {
  const auto size = *rc::gen::inRange<std::size_t>(0, most + 1);
  const auto byte = rc::gen::map(rc::gen::inRange<int>(static_cast<unsigned char>(first), 256),
                                 [](int value) { return static_cast<char>(value); });
  return *rc::gen::container<std::string>(size, byte);
}

RunTexts anyTexts() {
  return {anyText(32), anyText(64), anyText(16, 0)};
}

/// Decodes `frames` less those lost. All credentials must be `texts`. Returns how often they were reported.
int hear(const RunTexts& texts, const std::vector<zor::receiver::Observation>& frames, double loss,
         unsigned seed) {
  std::mt19937 random(seed);
  std::bernoulli_distribution lost(loss);
  zor::receiver::Decoder decoder;
  int times = 0;
  for (const auto& frame : frames) {
    if (lost(random)) continue;
    const auto credentials = decoder.observe(frame);
    if (!credentials) continue;
    RC_ASSERT(texts.are(*credentials));
    ++times;
  }
  return times;
}

RunKind anyKind() {
  return kRunKinds[*rc::gen::inRange<std::size_t>(0, std::size(kRunKinds))];
}

RC_GTEST_PROP(RunOnAir, ComesBackExactlyOrNotAtAll, ()) {
  std::uint8_t pacing[14];
  for (int i = 0; i < 14; ++i) {
    const bool isRepeat = i % 7 >= 4;
    pacing[i] = static_cast<std::uint8_t>(*rc::gen::inRange(i % 7 == 4 ? 0 : 1, isRepeat ? 4 : 256));
  }
  ZorSuite().SmartConfigV5_SetProperty(pacing, sizeof pacing);
  const RunTexts texts = anyTexts();
  const double loss = *rc::gen::inRange(0, 90) / 100.0;
  const int times = hear(texts, runOnAir(texts, anyKind(), 2), loss, *rc::gen::arbitrary<unsigned>());
  RC_CLASSIFY(times > 0, "heard");
}

RC_GTEST_PROP(RunOnAir, ComesBackWhenNothingIsLost, ()) {
  const std::uint8_t defaults[14] = {30, 30, 100, 0, 1, 1, 5, 30, 15, 100, 0, 1, 1, 5};
  ZorSuite().SmartConfigV5_SetProperty(defaults, sizeof defaults);
  const RunTexts texts = anyTexts();
  RC_ASSERT(hear(texts, runOnAir(texts, anyKind(), 2), 0, 0) >= 1);
}

RC_GTEST_PROP(Scanners, DoWhatTheObviousOnesDo, ()) {
  // Mostly characters that mean something to a scanner.
  const std::string alphabet(":=,ab \t\r\n\0\xFF", 11);
  const std::string line = *rc::gen::container<std::string>(rc::gen::elementOf(alphabet));
  RC_ASSERT(scannersAgree(line, *rc::gen::inRange<std::size_t>(0, line.size() + 1)));
}

/// The record of a number, which differs from those of other numbers in one or two fields only.
ZorModuleRecord recordOf(int number) {
  ZorModuleRecord record{"same", "same", "same", "same"};
  char* const fields[] = {record.mac, record.ip, record.ver, record.cap};
  std::snprintf(fields[number % 4], sizeof record.mac, "%d", number / 4);
  return record;
}

RC_GTEST_PROP(RecordTable, HoldsTheLatestHundred, ()) {
  const int universe = *rc::gen::element(20, 104, 300);
  const auto numbers = *rc::gen::container<std::vector<int>>(*rc::gen::inRange<std::size_t>(0, 600),
                                                             rc::gen::inRange(0, universe));
  zor::RecordTable table;
  std::deque<int> model;
  for (const int number : numbers) {
    const bool known = std::find(model.begin(), model.end(), number) != model.end();
    RC_ASSERT(table.contains(recordOf(number)) == known);
    if (known) continue;
    table.add(recordOf(number));
    model.push_back(number);
    if (model.size() > 100) model.pop_front();
  }
}

}  // namespace
