#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/cli/Zorctl.h"

namespace {

using nlohmann::json;

/// The first row that `bench-provision` prints for these arguments: of one phone.
json benchmarkRow(const std::string& arguments) {
  std::FILE* const output = popen((BENCH_PROVISION " --sent both --json " + arguments).c_str(), "r");
  char line[4096] = "null";
  EXPECT_NE(std::fgets(line, sizeof line, output), nullptr);
  while (std::fgetc(output) != EOF) continue;
  EXPECT_EQ(pclose(output), 0);
  return json::parse(line);
}

TEST(Simulate, HasTheFiguresOfTheBenchmark) {
  const struct {
    const char *ssidLength, *passLength, *packet, *loss, *air;
  } cases[] = {{"9", "12", "9 + 12 bytes", "30", "one by one"},
               {"32", "64", "32 + 64 bytes", "50", "bursts"},
               {"9", "12", "9 + 12 bytes", "10", "corrected within 5 s"}};
  for (const auto& c : cases) {
    const json row = benchmarkRow("--runs 40 --packet '" + std::string(c.packet) + "' --loss " + c.loss +
                                  " --air '" + c.air + "'");
    Zorctl zorctl({"simulate", "--ssid-length", c.ssidLength, "--pass-length", c.passLength, "--loss", c.loss,
                   "--air", c.air, "--runs", "40", "--json"});
    EXPECT_EQ(zorctl.wait(), 0) << zorctl.err();
    const json finished = zorctl.event("finished");
    EXPECT_EQ(finished.at("median_seconds"), row.at("median s")) << row;
    EXPECT_EQ(finished.at("p95_seconds"), row.at("p95 s")) << row;
    EXPECT_EQ(finished.at("bound_median_seconds"), row.at("bound median s")) << row;
    EXPECT_EQ(finished.at("curve").at(2).at("seconds"), row.at("median s")) << row;
  }
}

TEST(Simulate, DrawsTheCurveAndRefusesWrongUse) {
  const std::string file = "/tmp/zor-curve-" + std::to_string(getpid()) + ".svg";
  Zorctl zorctl({"simulate", "--ssid-length", "1", "--pass-length", "0", "--runs", "4", "--curve", file});
  EXPECT_EQ(zorctl.wait(), 0) << zorctl.err();
  EXPECT_TRUE(contains(zorctl.out(), "0 of 4 runs not provisioned")) << zorctl.out();
  std::ifstream stream(file);
  const std::string svg{std::istreambuf_iterator<char>(stream), {}};
  unlink(file.c_str());
  EXPECT_TRUE(svg.starts_with("<svg ") && svg.ends_with("</svg>\n") && contains(svg, "V40H700")) << svg;

  Zorctl wrong({"simulate", "--ssid-length", "1", "--pass-length", "0", "--air", "moon"});
  EXPECT_EQ(wrong.wait(), 2);
  EXPECT_TRUE(isOneLine(wrong.err()) && contains(wrong.err(), "'moon': give one of one by one; bursts"));
}

}  // namespace
