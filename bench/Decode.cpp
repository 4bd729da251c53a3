// Measures how fast zorctl decode reads a capture file and in how much memory, against tshark, which lists
// the same file's destinations and lengths.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"
#include "simulator/CaptureFile.h"
#include "simulator/PhonePlan.h"
#include "simulator/Random.h"

namespace zor::bench {
namespace {

/// What a program took to its end.
struct Use {
  double cpuSeconds = 0;
  double memoryMiB = 0;  ///< At most.
};

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Runs a program without output. Ends the process when it cannot be run or fails.
Use run(std::vector<std::string> arguments) {
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  const pid_t process = fork();
  if (process == 0) {
    const int null = open("/dev/null", O_RDWR);
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (process < 0 || wait4(process, &status, 0, &usage) != process || status != 0) {
    std::fprintf(stderr, "%s could not be run or failed: 'scripts/install-packages bench' installs tshark\n",
                 argv[0]);
    std::exit(1);
  }
  constexpr double kKibPerMib = 1024;
  return {secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
          static_cast<double>(usage.ru_maxrss) / kKibPerMib};
}

const simulator::PlannedFrame& frameOf(const simulator::PlannedChannel& channel, std::int64_t number) {
  return channel.frames[static_cast<std::size_t>(number) % channel.frames.size()];
}

std::int64_t timeOf(const simulator::PlannedChannel& channel, std::int64_t number) {
  const auto block = number / static_cast<std::int64_t>(channel.frames.size());
  return block * channel.periodUs + frameOf(channel, number).timeUs;
}

/// What a file holds.
struct Content {
  const char* name;
  simulator::CaptureLink link;
  int strangers;  ///< Frames of others after each frame of the run.
};
constexpr std::array<Content, 3> kContents = {{
    {"a run, Ethernet", simulator::CaptureLink::ethernet, 0},
    {"a run, encrypted 802.11", simulator::CaptureLink::radiotap, 0},
    {"a run among nine times as many frames, Ethernet", simulator::CaptureLink::ethernet, 9},
}};

/// Writes the first `count` frames of an endless run, those of others included.
void writeCapture(const std::string& path, const Content& content, std::int64_t count) {
  const simulator::PhonePlan plan =
      simulator::makePlan({"Home", "correct horse", {}}, ZorFindPace("default")->values, {});
  simulator::Random random(1);
  std::array<std::int64_t, 2> sent{};  // By channel.
  simulator::CaptureFile file(path, content.link, false);
  for (std::int64_t written = 0; written < count;) {
    const std::size_t next = timeOf(plan.channels[0], sent[0]) < timeOf(plan.channels[1], sent[1]) ? 0 : 1;
    const simulator::PlannedFrame& planned = frameOf(plan.channels[next], sent[next]);
    simulator::AirFrame frame;
    frame.timeUs = timeOf(plan.channels[next], sent[next]);
    frame.source = {2, 0, 0, 0, 0, 1};
    frame.destination = planned.destination;
    frame.length = planned.length;
    frame.encryption = simulator::Encryption::ccmp;
    file.write(frame);
    ++sent[next];
    ++written;
    for (int i = 0; i < content.strangers && written < count; ++i, ++written) {
      frame.source = {2, 0, 0, 0, 1, static_cast<std::uint8_t>(random.below(100))};
      frame.destination = i % 2 == 0 ? receiver::MacAddress{2, 0, 0, 0, 0, 9}
                                     : receiver::MacAddress{1, 0, 0x5e, 127, 255, 250};
      frame.length = static_cast<std::int32_t>(random.below(1400));
      file.write(frame);
    }
  }
  if (!file.close()) {
    std::fprintf(stderr, "%s cannot be written\n", path.c_str());
    std::exit(1);
  }
}

Use decode(const std::string& path, const Content& content, std::int64_t frames) {
  writeCapture(path, content, frames);
  return run({ZORCTL, "decode", path});
}

Row makeRow(const Content& content, std::int64_t frames, const std::string& path) {
  const double twice = decode(path, content, 2 * frames).memoryMiB;
  const double eightTimes = decode(path, content, 8 * frames).memoryMiB;
  const Use ours = decode(path, content, frames);
  const bool isWifi = content.link == simulator::CaptureLink::radiotap;
  const Use theirs =
      run({"tshark", "-r", path, "-T", "fields", "-e", isWifi ? "wlan.da" : "eth.dst", "-e", "frame.len"});
  const auto rate = [frames](const Use& use) { return static_cast<double>(frames) / use.cpuSeconds; };
  return {{"the file holds", content.name},
          {"frames", frames},
          {"frames/s of a core", rate(ours)},
          {"tshark frames/s", rate(theirs)},
          {"speed to tshark", ratio(rate(ours), rate(theirs))},
          {"MiB", ours.memoryMiB},
          {"MiB, 2 times the frames", twice},
          {"MiB, 8 times", eightTimes},
          {"tshark MiB", theirs.memoryMiB}};
}

}  // namespace

void runBenchmark(Program& program) {
  std::int64_t frames = 1'000'000;
  program.options()
      .add_option("--frames", frames, "Frames in the file")
      ->check(CLI::Range(1000, 100'000'000));
  program.parse("Speed and memory of zorctl decode, against tshark on the same file");
  const std::string path =
      std::filesystem::temp_directory_path() / ("zor-bench-" + std::to_string(getpid()) + ".pcap");
  Table table("decode", "A capture file from the first byte to the verdict; baseline: tshark -T fields");
  for (const Content& content : kContents) table.add(makeRow(content, frames, path));
  std::filesystem::remove(path);
  program.print(table);
}

}  // namespace zor::bench
