#include "cli/CurveSvg.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace zor::cli {
namespace {

// The plot's place in the picture, pixels.
constexpr double kLeft = 60;
constexpr double kRight = 700;
constexpr double kTop = 40;
constexpr double kBottom = 360;

/// Returns `text` with the characters that mean something to XML replaced.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '&') result += "&amp;";
    if (c == '<') result += "&lt;";
    if (c != '&' && c != '<') result += c;
  }
  return result;
}

/// The distance of about five marks on an axis that ends at `end`: 1, 2 or 5 times a power of ten.
double markDistance(double end) {
  const double rough = std::max(end, 1e-3) / 5;
  const double power = std::pow(10, std::floor(std::log10(rough)));
  for (const double step : {1.0, 2.0, 5.0}) {
    if (rough <= step * power) return step * power;
  }
  return 10 * power;
}

class Curve {
 public:
  Curve(const std::vector<double>& seconds, double giveUpSeconds)
      : seconds_(seconds), giveUpSeconds_(giveUpSeconds) {
    const auto provisioned = std::lower_bound(seconds.begin(), seconds.end(), giveUpSeconds);
    distance_ = markDistance(provisioned == seconds.begin() ? giveUpSeconds : *std::prev(provisioned));
    end_ = provisioned == seconds.begin() ? giveUpSeconds
                                          : distance_ * std::ceil(*std::prev(provisioned) / distance_);
  }

  std::string svg(const std::string& title) {
    out_ << R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 720 410" font-family="sans-serif")"
         << R"( font-size="13"><rect width="720" height="410" fill="white"/>)"
         << "\n";
    text((kLeft + kRight) / 2, kTop - 18, "middle", escaped(title));
    drawAxes();
    drawLine();
    out_ << "</svg>\n";
    return out_.str();
  }

 private:
  double x(double seconds) const { return kLeft + (kRight - kLeft) * seconds / end_; }
  static double y(double share) { return kBottom - (kBottom - kTop) * share; }

  void text(double left, double baseline, const char* anchor, const std::string& content) {
    out_ << "<text x=\"" << left << "\" y=\"" << baseline << "\" text-anchor=\"" << anchor << "\">" << content
         << "</text>\n";
  }

  void gridLine(double x1, double y1, double x2, double y2) {
    out_ << R"(<path stroke="#ddd" d="M)" << x1 << ' ' << y1 << 'L' << x2 << ' ' << y2 << "\"/>\n";
  }

  void drawAxes() {
    for (int percent = 0; percent <= 100; percent += 25) {
      gridLine(kLeft, y(percent / 100.0), kRight, y(percent / 100.0));
      text(kLeft - 6, y(percent / 100.0) + 4, "end", std::to_string(percent) + " %");
    }
    for (int mark = 0; mark * distance_ <= end_ * 1.0001; ++mark) {
      gridLine(x(mark * distance_), kTop, x(mark * distance_), kBottom);
      std::ostringstream label;
      label << mark * distance_;
      text(x(mark * distance_), kBottom + 18, "middle", label.str());
    }
    text((kLeft + kRight) / 2, kBottom + 40, "middle", "seconds until the module has the credentials");
  }

  /// A step for each run that provisioned.
  void drawLine() {
    out_ << R"(<path fill="none" stroke="#1f6fb4" stroke-width="2" d="M)" << kLeft << ' ' << kBottom;
    for (std::size_t run = 0; run < seconds_.size() && seconds_[run] < giveUpSeconds_; ++run) {
      const double share = static_cast<double>(run + 1) / static_cast<double>(seconds_.size());
      out_ << 'H' << x(seconds_[run]) << 'V' << y(share);
    }
    out_ << 'H' << kRight << "\"/>\n";
  }

  const std::vector<double>& seconds_;
  double giveUpSeconds_;
  double distance_;
  double end_;
  std::ostringstream out_;
};

}  // namespace

std::string curveSvg(const std::vector<double>& seconds, double giveUpSeconds, const std::string& title) {
  return Curve(seconds, giveUpSeconds).svg(title);
}

}  // namespace zor::cli
