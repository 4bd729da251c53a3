#include "cli/CurveSvg.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "cli/SvgWriter.h"

namespace zor::cli {
namespace {

// The plot's place in the picture, pixels.
constexpr double kLeft = 60;
constexpr double kRight = 700;
constexpr double kTop = 40;
constexpr double kBottom = 360;
constexpr double kWidth = 720;
constexpr double kHeight = 410;

constexpr double kLineHeight = 16;

constexpr int kMarks = 5;

/// Widest line of the title that fits.
constexpr std::size_t kColumns = 95;

class Curve {
 public:
  Curve(const std::vector<double>& seconds, double giveUpSeconds)
      : seconds_(seconds), giveUpSeconds_(giveUpSeconds) {
    const auto provisioned = std::lower_bound(seconds.begin(), seconds.end(), giveUpSeconds);
    const double last = provisioned == seconds.begin() ? giveUpSeconds : *std::prev(provisioned);
    distance_ = markDistance(last, kMarks);
    end_ = distance_ * std::ceil(last / distance_);
  }

  std::string svg(const std::string& title) {
    drawTitle(title);
    drawAxes();
    drawLine();
    return svg_.file(kWidth, kHeight);
  }

 private:
  double x(double seconds) const { return kLeft + (kRight - kLeft) * seconds / end_; }
  static double y(double share) { return kBottom - (kBottom - kTop) * share; }

  void drawTitle(const std::string& title) {
    const std::vector<std::string> lines = linesOf(title, kColumns);
    double baseline = kTop - 12 - kLineHeight * static_cast<double>(lines.size() - 1);
    for (const std::string& line : lines) {
      svg_.text((kLeft + kRight) / 2, baseline, "middle", line);
      baseline += kLineHeight;
    }
  }

  void drawAxes() {
    for (int percent = 0; percent <= 100; percent += 25) {
      const double height = y(percent / 100.0);
      svg_.line("grid", kLeft, height, kRight, height);
      svg_.text(kLeft - 6, height + 4, "quiet end", std::to_string(percent) + " %");
    }
    for (int mark = 0; mark * distance_ <= end_ * 1.0001; ++mark) {
      svg_.line("grid", x(mark * distance_), kTop, x(mark * distance_), kBottom);
      std::ostringstream label;
      label << mark * distance_;
      svg_.text(x(mark * distance_), kBottom + 18, "quiet middle", label.str());
    }
    svg_.text((kLeft + kRight) / 2, kBottom + 40, "middle", "seconds until the module has the credentials");
  }

  /// A step for each run that provisioned.
  void drawLine() {
    std::ostringstream data;
    data << 'M' << kLeft << ' ' << kBottom;
    for (std::size_t run = 0; run < seconds_.size() && seconds_[run] < giveUpSeconds_; ++run) {
      const double share = static_cast<double>(run + 1) / static_cast<double>(seconds_.size());
      data << 'H' << x(seconds_[run]) << 'V' << y(share);
    }
    data << 'H' << kRight;
    svg_.path("curve", data.str());
  }

  const std::vector<double>& seconds_;
  double giveUpSeconds_;
  double distance_;
  double end_;
  SvgWriter svg_;
};

}  // namespace

std::string curveSvg(const std::vector<double>& seconds, double giveUpSeconds, const std::string& title) {
  return Curve(seconds, giveUpSeconds).svg(title);
}

}  // namespace zor::cli
