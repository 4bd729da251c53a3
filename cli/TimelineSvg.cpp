#include "cli/TimelineSvg.h"

#include <array>
#include <cmath>
#include <sstream>
#include <vector>

#include "cli/FramePicture.h"
#include "cli/SenderText.h"
#include "cli/SvgWriter.h"

namespace zor::cli {
namespace {

using receiver::FrameRole;
using receiver::LegReport;
using receiver::LoggedFrame;
using receiver::News;

// Pixels.
constexpr double kTimelineWidth = 960;
constexpr double kTimelineLeft = 170;
constexpr double kTimelineRight = 940;
constexpr double kRowHeight = 24;
constexpr double kTimelineLineHeight = 18;

constexpr int kTimelineMarks = 8;

/// Widest line of text that fits.
constexpr std::size_t kTimelineColumns = 130;

std::string secondsText(double seconds) {
  std::ostringstream text;
  text << seconds << " s";
  return text.str();
}

double toTenths(std::int64_t microseconds) {
  return std::round(static_cast<double>(microseconds) / 1e5) / 10;
}

/// A tick at `x` in the row around `y`. What is new is tall, what is repeated is short and low, what says no
/// byte is short and in the middle, and a contradiction is a cross.
void appendMark(std::ostringstream& data, News news, double x, double y) {
  switch (news) {
    case News::none:
      data << 'M' << x << ' ' << y - 4 << "v8";
      break;
    case News::repeated:
      data << 'M' << x << ' ' << y + 2 << "v7";
      break;
    case News::fresh:
      data << 'M' << x << ' ' << y - 9 << "v18";
      break;
    case News::contradicting:
      data << 'M' << x - 4 << ' ' << y - 7 << "l8 14m0 -14l-8 14";
      break;
  }
}

/// Draws one leg below another.
class Leg {
 public:
  Leg(const LegReport& leg, const Decoded& decoded)
      : leg_(leg),
        start_(decoded.start),
        frames_(pictureFrames(leg, decoded.start, decoded.showSecrets)),
        range_(pictureRange(leg, decoded.start)) {}

  /// Returns where the next one begins.
  double draw(SvgWriter& svg, double top) {
    svg.text(20, top + kTimelineLineHeight, "strong", title());
    top += kTimelineLineHeight + 28;
    drawAxis(svg, top, top + kRowHeight * rows());
    double y = top + kRowHeight / 2;
    const auto counts = countRoles(frames_);
    for (std::size_t role = 0; role < counts.size(); ++role) {
      if (!isShown(role)) continue;
      svg.line("row", kTimelineLeft, y, kTimelineRight, y);
      svg.text(20, y + 4, "", kRoleNames[role]);
      svg.text(kTimelineLeft - 10, y + 4, "quiet end", std::to_string(counts[role]));
      drawMarks(svg, static_cast<FrameRole>(role), y);
      y += kRowHeight;
    }
    drawCompletion(svg, top, y - kRowHeight / 2);
    return y + 30;
  }

 private:
  bool isShown(std::size_t role) const {
    return isRowShown(static_cast<FrameRole>(role), countRoles(frames_));
  }
  double x(std::int64_t time) const {
    return kTimelineLeft + (kTimelineRight - kTimelineLeft) * toSeconds(time - range_.from) /
                               toSeconds(range_.to - range_.from);
  }

  int rows() const {
    int count = 0;
    for (std::size_t role = 0; role < receiver::kFrameRoles; ++role) count += isShown(role) ? 1 : 0;
    return count;
  }

  std::string title() const {
    const std::int64_t last = leg_.lastMicroseconds - start_;
    std::string text = legText(leg_.leg);
    if (last > range_.to) {
      text += ", the first " + secondsText(toTenths(range_.to - range_.from)) + " of " +
              secondsText(toTenths(last - range_.from));
    }
    return text;
  }

  void drawAxis(SvgWriter& svg, double top, double bottom) const {
    const double from = toSeconds(range_.from);
    const double to = toSeconds(range_.to);
    const double distance = markDistance(to - from, kTimelineMarks);
    for (auto mark = static_cast<std::int64_t>(from / distance); static_cast<double>(mark) * distance <= to;
         ++mark) {
      const double seconds = static_cast<double>(mark) * distance;
      if (seconds < from) continue;
      const double place = x(static_cast<std::int64_t>(seconds * 1e6));
      svg.line("grid", place, top, place, bottom + 4);
      svg.text(place, bottom + kTimelineLineHeight, "quiet middle", secondsText(seconds));
    }
  }

  void drawMarks(SvgWriter& svg, FrameRole role, double y) const {
    std::array<std::ostringstream, receiver::kNews> data;
    for (const LoggedFrame& frame : frames_) {
      if (frame.role != role || frame.timeMicroseconds > range_.to) continue;
      appendMark(data[static_cast<std::size_t>(frame.news)], frame.news, x(frame.timeMicroseconds), y);
    }
    for (std::size_t news = 0; news < data.size(); ++news) {
      if (data[news].tellp() > 0) svg.path(std::string("mark ") + kNewsNames[news], data[news].str());
    }
  }

  void drawCompletion(SvgWriter& svg, double top, double bottom) const {
    if (!leg_.completion) return;
    const std::int64_t time = leg_.completion->timeMicroseconds - start_;
    if (time > range_.to) return;
    svg.line("done", x(time), top - 4, x(time), bottom);
    svg.text(x(time), top - 9, "done middle",
             "complete with frame " + std::to_string(leg_.completion->frame));
  }

  const LegReport& leg_;
  std::int64_t start_;
  std::vector<LoggedFrame> frames_;
  PictureRange range_;
};

double drawLines(SvgWriter& svg, double top, const char* classes, const std::string& text) {
  for (const std::string& line : linesOf(text, kTimelineColumns))
    svg.text(20, top += kTimelineLineHeight, classes, line);
  return top;
}

double drawLegend(SvgWriter& svg, double top) {
  static constexpr std::array<const char*, receiver::kNews> kTexts = {
      "says no byte of its own", "repeats a byte", "says a new byte", "contradicts an earlier one"};
  double x = 30;
  for (const News news : {News::fresh, News::repeated, News::contradicting, News::none}) {
    const auto index = static_cast<std::size_t>(news);
    std::ostringstream data;
    appendMark(data, news, x, top);
    svg.path(std::string("mark ") + kNewsNames[index], data.str());
    svg.text(x + 12, top + 4, "quiet", kTexts[index]);
    x += 200;
  }
  return top + 24;
}

}  // namespace

std::string timelineSvg(const Decoded& decoded) {
  SvgWriter svg;
  double top = 14;
  if (decoded.senders.empty()) {
    top = drawLines(svg, top, "", decoded.finished.at("verdict").get<std::string>());
    return svg.file(kTimelineWidth, top + kTimelineLineHeight);
  }
  for (std::size_t i = 0; i < decoded.senders.size(); ++i) {
    const Json& sender = decoded.senders[i];
    std::string text = "sender " + sender.at("sender").get<std::string>() + ": ";
    for (const Json& finding : sender.at("findings")) {
      top = drawLines(svg, top, "", text + finding.at("text").get<std::string>());
      text = "also: ";
    }
    for (const LegReport& leg : decoded.report.senders[i].legs) top = Leg(leg, decoded).draw(svg, top + 8);
  }
  return svg.file(kTimelineWidth, drawLegend(svg, top + 14));
}

}  // namespace zor::cli
