#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "cli/Command.h"
#include "cli/CurveSvg.h"
#include "cli/Ending.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/Interrupt.h"
#include "cli/LogLines.h"
#include "cli/Output.h"
#include "cli/Pace.h"
#include "cli/WholeFile.h"
#include "simulator/Airs.h"
#include "simulator/Percentile.h"
#include "simulator/SampleSecret.h"
#include "simulator/Trial.h"

namespace zor::cli {
namespace {

constexpr int kMaxRuns = 1'000'000;
constexpr int kMaxLossPercent = 99;

struct SimulateOptions : CommonOptions {
  std::size_t ssidLength = 0;
  std::size_t passLength = 0;
  int lossPercent = 0;
  std::string air = "one by one";
  std::string pace = "default";
  int runs = 200;
  std::optional<std::string> curveFile;
};

const simulator::NamedAir& findAir(const std::string& name) {
  if (const simulator::NamedAir* const air = simulator::findAir(name)) return *air;
  std::string names;
  for (const simulator::NamedAir& air : simulator::airs()) names += (names.empty() ? "" : "; ") + air.name;
  throw WrongUse("no air is called '" + printable(name) + "': give one of " + names);
}

/// Runs all trials, a few at a time so that a signal is seen. Throws `Stopped` on one.
std::vector<simulator::Outcome> runAll(const simulator::Scenario& scenario, int runs, Output& output,
                                       const Interrupt& interrupt) {
  constexpr int kAtOnce = 16;
  std::vector<simulator::Outcome> outcomes;
  for (int done = 0; done < runs; done = static_cast<int>(outcomes.size())) {
    output.showLive(std::to_string(done) + " of " + std::to_string(runs) + " runs simulated",
                    static_cast<double>(done) / runs);
    if (interrupt.raised()) throw Stopped("stopped before all runs were simulated", interrupt.exitCode());
    const int batch = std::min(kAtOnce, runs - done);
    const auto added = simulator::runTrials(scenario, batch, static_cast<std::uint64_t>(done) + 1);
    outcomes.insert(outcomes.end(), added.begin(), added.end());
  }
  return outcomes;
}

std::string trialTimeText(double seconds) {
  if (seconds >= simulator::kGiveUpSeconds) return "not within 100 s";
  char text[32];
  std::snprintf(text, sizeof text, "%.2f s", seconds);
  return text;
}

/// The times of all runs, sorted.
struct Times {
  std::vector<double> decoder;
  std::vector<double> bound;
};

Times sortedTimes(const std::vector<simulator::Outcome>& outcomes) {
  Times times;
  for (const simulator::Outcome& outcome : outcomes) {
    times.decoder.push_back(outcome.decoderSeconds);
    times.bound.push_back(outcome.boundSeconds);
  }
  std::sort(times.decoder.begin(), times.decoder.end());
  std::sort(times.bound.begin(), times.bound.end());
  return times;
}

std::string describeRuns(const SimulateOptions& options) {
  return "pace " + printable(options.pace) + ", air \"" + options.air + "\", " +
         std::to_string(options.lossPercent) + " % of frames lost, SSID of " +
         std::to_string(options.ssidLength) + " and pass phrase of " + std::to_string(options.passLength) +
         " bytes";
}

Ending show(const Times& times, Output& output) {
  Json curve = Json::array();
  output.reportText("PROVISIONED  AFTER");
  for (const int percent : {5, 25, 50, 75, 90, 95, 99}) {
    const double seconds = simulator::percentile(times.decoder, percent / 100.0);
    curve.push_back({{"percent", percent}, {"seconds", seconds}});
    char share[16];
    std::snprintf(share, sizeof share, "%9d %%  ", percent);
    output.reportText(share + trialTimeText(seconds));
  }
  const auto failed = std::count_if(times.decoder.begin(), times.decoder.end(),
                                    [](double seconds) { return seconds >= simulator::kGiveUpSeconds; });
  Ending ending;
  const double median = simulator::median(times.decoder);
  const double p95 = simulator::percentile(times.decoder, 0.95);
  ending.summary = "median " + trialTimeText(median) + ", 95th percentile " + trialTimeText(p95) + ", " +
                   std::to_string(failed) + " of " + std::to_string(times.decoder.size()) +
                   " runs not provisioned within 100 s";
  ending.details = {{"median_seconds", median},
                    {"p95_seconds", p95},
                    {"bound_median_seconds", simulator::median(times.bound)},
                    {"bound_p95_seconds", simulator::percentile(times.bound, 0.95)},
                    {"runs", times.decoder.size()},
                    {"runs_given_up", failed},
                    {"curve", curve}};
  return ending;
}

ExitCode simulate(const SimulateOptions& options) {
  const simulator::Pace pace = readPace(options.pace);
  simulator::Environment environment = findAir(options.air).environment;
  environment.radio.loss = options.lossPercent / 100.0;
  const LogLines logLines(options.verbose);
  const simulator::Secret secret = simulator::sampleSecret(options.ssidLength, options.passLength);
  const simulator::PhonePlan plan = simulator::makePlan(secret, pace, {});
  const simulator::PhonePlan earlier = simulator::makePlan(simulator::mistyped(secret), pace, {});
  std::optional<WholeFile> file;
  if (options.curveFile) file.emplace(*options.curveFile);
  const Interrupt interrupt;
  Output output(options, interrupt);
  output.report(describeRuns(options), {{"event", "simulating"},
                                        {"ssid_length", options.ssidLength},
                                        {"pass_length", options.passLength},
                                        {"loss_percent", options.lossPercent},
                                        {"air", options.air},
                                        {"pace", pace},
                                        {"runs", options.runs}});
  const Times times =
      sortedTimes(runAll({{{&plan, &earlier}}, environment}, options.runs, output, interrupt));
  Ending ending = show(times, output);
  if (file)
    ending.problem = file->write(curveSvg(times.decoder, simulator::kGiveUpSeconds, describeRuns(options)));
  return finish(output, ending);
}

void addOptions(CLI::App& command, SimulateOptions& options) {
  command.add_option("--ssid-length", options.ssidLength, "Bytes of the SSID, 1 to 32")
      ->option_text("BYTES")
      ->check(CLI::Range(std::size_t{1}, kZorMaxSsidLength))
      ->required();
  command.add_option("--pass-length", options.passLength, "Bytes of the pass phrase, 0 to 64")
      ->option_text("BYTES")
      ->check(CLI::Range(std::size_t{0}, kZorMaxPassPhraseLength))
      ->required();
  command.add_option("--loss", options.lossPercent, "Share of the frames that the module misses, 0 to 99")
      ->option_text("PERCENT")
      ->check(CLI::Range(0, kMaxLossPercent))
      ->capture_default_str();
  command.add_option("--air", options.air, "What else happens on the air; a wrong name lists them")
      ->option_text("NAME")
      ->capture_default_str();
  command.add_option("--pace", options.pace, "As for 'zorctl provision'")
      ->option_text("PACE")
      ->capture_default_str();
  command.add_option("--runs", options.runs, "Runs to simulate")
      ->option_text("COUNT")
      ->check(CLI::Range(1, kMaxRuns))
      ->capture_default_str();
  addTextOption(command, "--curve", options.curveFile, "Write the curve to this file, as SVG", "FILE");
  addJsonOption(command, options);
}

}  // namespace

Command addSimulate(CLI::App& app) {
  const auto options = std::make_shared<SimulateOptions>();
  CLI::App* const command =
      app.add_subcommand("simulate", "Simulate how long modules wait for their credentials; send nothing");
  addOptions(*command, *options);
  command->footer("Example: zorctl simulate --ssid-length 9 --pass-length 12 --loss 30 --pace fast");
  return {command, [options] { return simulate(*options); }};
}

}  // namespace zor::cli
