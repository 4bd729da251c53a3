#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "cli/Command.h"
#include "cli/DecodeView.h"
#include "cli/Ending.h"
#include "cli/Escape.h"
#include "cli/FramePicture.h"
#include "cli/Interrupt.h"
#include "cli/Output.h"
#include "cli/ReportPage.h"
#include "cli/TimelineSvg.h"
#include "cli/WholeFile.h"
#include "receiver/analysis/Analysis.h"
#include "receiver/capture/CaptureReader.h"

namespace zor::cli {
namespace {

using receiver::CaptureReader;

constexpr std::chrono::milliseconds kRedrawEvery{100};

struct DecodeOptions : CommonOptions {
  std::string file;
  std::string interface;
  bool showSecrets = false;
  bool showFrames = false;
  std::optional<std::string> timeline;
  std::optional<std::string> report;
};

/// Reads one capture to its end.
class Decoding {
 public:
  Decoding(const DecodeOptions& options, const Interrupt& interrupt, Output& output)
      : options_(options),
        interrupt_(interrupt),
        output_(output),
        view_(options.showSecrets, output),
        analysis_(options.timeline || options.report ? kFramesInPictures : 0) {
    decoded_.showSecrets = options.showSecrets;
  }

  ExitCode run() {
    open();
    openPictures(options_.timeline, timeline_);
    openPictures(options_.report, report_);
    decoded_.started = {{"event", "started"},
                        {"file", isLive() ? Json() : jsonText(options_.file)},
                        {"interface", isLive() ? jsonText(options_.interface) : Json()},
                        {"link_layer", nameOf(reader_.linkLayer())}};
    output_.report(
        "reading " + name() + ", " + nameOf(reader_.linkLayer()) + (isLive() ? ", Ctrl-C ends" : ""),
        decoded_.started);
    Ending ending;
    readAll(ending);
    decoded_.report = analysis_.report();
    const receiver::CaptureReport& report = decoded_.report;
    decoded_.senders = view_.showSenders(report);
    ending.summary = summaryOf(report);
    ending.details = {
        {"frames", report.frames},
        {"seconds", static_cast<double>(report.lastMicroseconds - report.firstMicroseconds) / 1e6},
        {"senders", report.senders.size()},
        {"broadcasts", report.broadcasts},
        {"our_multicasts", report.ourGroups},
        {"other_multicasts", report.otherGroups},
        {"unicasts", report.unicasts},
        {"verdict", report.senders.empty() ? Json(ending.summary) : Json()}};
    writePictures(ending);
    return finish(output_, ending);
  }

 private:
  bool isLive() const { return options_.file.empty(); }
  std::string name() const { return printable(isLive() ? options_.interface : options_.file); }

  void open() {
    if (!isLive() && access(options_.file.c_str(), R_OK) != 0)
      throw WrongUse("'" + name() + "' cannot be read: " + std::strerror(errno));
    const std::string problem =
        isLive() ? reader_.openInterface(options_.interface) : reader_.openFile(options_.file);
    if (problem.empty()) return;
    if (isLive()) throw RunFailure("cannot capture on '" + name() + "': " + printable(problem));
    throw RunFailure("'" + name() + "' is no capture that can be read: " + printable(problem) +
                     "; give a pcap or pcapng file");
  }

  void openPictures(const std::optional<std::string>& picture, std::optional<WholeFile>& file) const {
    if (!picture) return;
    std::error_code error;
    if (!isLive() && std::filesystem::equivalent(*picture, options_.file, error))
      throw WrongUse("'" + name() + "' is the capture itself: give another name to write to");
    file.emplace(*picture);
  }

  void readAll(Ending& ending) {
    struct stat status {};
    const bool hasSize = !isLive() && stat(options_.file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    const double size = hasSize ? static_cast<double>(status.st_size) : 0;
    while (!interrupt_.raised()) {
      if (isLive()) waitForFrames();
      const auto state = reader_.read([this](const receiver::CapturedFrame& frame) { take(frame); });
      if (state == CaptureReader::Status::ended) return;
      if (state == CaptureReader::Status::failed) {
        ending.problem = "'" + name() + "' was read up to frame " + std::to_string(analysis_.frames()) +
                         ": " + printable(reader_.problem());
        return;
      }
      showProgress(size);
      if (isLive() && output_.isGone()) return;
    }
    if (isLive()) return;
    ending.problem = "stopped by a signal; what is shown is of the frames read so far";
    ending.stopped = true;
  }

  void writePictures(Ending& ending) {
    decoded_.finished = finishedEvent(ending);
    std::string problem;
    if (timeline_) problem = timeline_->write(timelineSvg(decoded_));
    if (report_ && problem.empty()) problem = report_->write(reportPage(decoded_));
    if (ending.problem.empty()) ending.problem = problem;
  }

  void waitForFrames() const {
    pollfd wanted[] = {
        {reader_.descriptor(), POLLIN, 0}, {interrupt_.descriptor(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
    poll(wanted, 3, -1);
  }

  void take(const receiver::CapturedFrame& frame) {
    if (analysis_.frames() == 0) {
      decoded_.start = frame.timeMicroseconds;
      view_.noteStart(frame.timeMicroseconds);
    }
    const receiver::Completion* const completion = analysis_.observe(frame);
    if (options_.showFrames && isOfRun(frame)) view_.showFrame(analysis_.frames(), frame);
    if (completion != nullptr) view_.showCompletion(frame, *completion);
  }

  static bool isOfRun(const receiver::CapturedFrame& frame) {
    if (frame.kind != receiver::FrameKind::data) return false;
    const receiver::Destination destination = receiver::classify(frame.destination);
    return destination != receiver::Destination::host && destination != receiver::Destination::otherGroup;
  }

  void showProgress(double size) {
    const auto now = std::chrono::steady_clock::now();
    if (!output_.isLive() || now < nextRedraw_) return;
    nextRedraw_ = now + kRedrawEvery;
    const std::string frames = std::to_string(analysis_.frames()) + " frames";
    if (size > 0) {
      output_.showLive(frames, static_cast<double>(reader_.position()) / size);
    } else {
      output_.showLive(frames);
    }
  }

  const DecodeOptions& options_;
  const Interrupt& interrupt_;
  Output& output_;
  DecodeView view_;
  CaptureReader reader_;
  receiver::Analysis analysis_;
  Decoded decoded_;
  std::optional<WholeFile> timeline_;
  std::optional<WholeFile> report_;
  std::chrono::steady_clock::time_point nextRedraw_;
};

ExitCode decode(const DecodeOptions& options) {
  if (options.file.empty() && options.interface.empty())
    throw WrongUse("nothing to decode: give a capture file, or --interface");
  if (options.timeline && options.timeline == options.report)
    throw WrongUse("--timeline and --report cannot go to the same file");
  const Interrupt interrupt;
  Output output(options, interrupt);
  return Decoding(options, interrupt, output).run();
}

}  // namespace

Command addDecode(CLI::App& app) {
  const auto options = std::make_shared<DecodeOptions>();
  CLI::App* const command = app.add_subcommand(
      "decode", "Say from a capture what phones send, and why a module does not hear them (Linux only)");
  CLI::Option* const file = command->add_option(
      "FILE", options->file, "Capture file, pcap or pcapng: Ethernet, Linux cooked, raw IP or 802.11");
  command
      ->add_option("--interface", options->interface,
                   "Capture on this network interface until Ctrl-C; in monitor mode, what is in the air")
      ->option_text("NAME")
      ->excludes(file);
  CLI::Option* const secrets = command->add_flag(
      "--show-secrets", options->showSecrets, "Show credentials; otherwise their lengths and a masked form");
  command
      ->add_flag("--frames", options->showFrames,
                 "Show every frame that may be of a run; they carry the credentials")
      ->needs(secrets);
  addTextOption(*command, "--report", options->report,
                "Write what was found to this file, as a page with pictures, HTML", "FILE");
  addTextOption(*command, "--timeline", options->timeline,
                "Write a picture of the frames to this file, as SVG", "FILE");
  addJsonOption(*command, *options);
  command->footer("Example: zorctl decode air.pcapng --report air.html");
  return {command, [options] { return decode(*options); }};
}

}  // namespace zor::cli
