#include "cli/SvgWriter.h"

#include <algorithm>
#include <cmath>

namespace zor::cli {
namespace {

constexpr char kStyle[] = R"(<style>
.back{fill:#fff}text{fill:#1f2328;font:13px sans-serif}.quiet{fill:#57606a}.strong{font-weight:bold}
.middle{text-anchor:middle}.end{text-anchor:end}
path{fill:none;stroke:#1f2328}.grid{stroke:#d8dee4}.curve{stroke:#0a5fb4;stroke-width:2}
.row{stroke:#f0f3f6;stroke-width:20}.mark{stroke-width:1.5}
.none{stroke:#7a4fa3}.repeated{stroke:#6e7781}.new{stroke:#0a5fb4}.contradicting{stroke:#c4271a}
.done{stroke:#1a7f37;stroke-width:2;stroke-dasharray:5 3}text.done{fill:#1a7f37;stroke:none}
@media(prefers-color-scheme:dark){
.back{fill:#0d1117}text{fill:#e6edf3}.quiet{fill:#9aa4ae}path{stroke:#e6edf3}.grid{stroke:#30363d}
.curve{stroke:#6cb6ff}.row{stroke:#161b22}.none{stroke:#c297ff}.repeated{stroke:#8b949e}.new{stroke:#6cb6ff}
.contradicting{stroke:#ff7b72}.done{stroke:#56d364}text.done{fill:#56d364}}
</style>
)";

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '&') result += "&amp;";
    if (c == '<') result += "&lt;";
    if (c != '&' && c != '<') result += c;
  }
  return result;
}

}  // namespace

void SvgWriter::text(double x, double baseline, std::string_view classes, std::string_view content) {
  body_ << "<text x=\"" << x << "\" y=\"" << baseline << "\" class=\"" << classes << "\">" << escaped(content)
        << "</text>\n";
}

void SvgWriter::path(std::string_view classes, std::string_view data) {
  body_ << "<path class=\"" << classes << "\" d=\"" << data << "\"/>\n";
}

void SvgWriter::line(std::string_view classes, double x1, double y1, double x2, double y2) {
  std::ostringstream data;
  data << 'M' << x1 << ' ' << y1 << 'L' << x2 << ' ' << y2;
  path(classes, data.str());
}

std::string SvgWriter::file(double width, double height) const {
  std::ostringstream file;
  file << R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 )" << width << ' ' << height << "\">"
       << kStyle << R"(<rect class="back" width=")" << width << R"(" height=")" << height << "\"/>\n"
       << body_.str() << "</svg>\n";
  return file.str();
}

std::vector<std::string> linesOf(const std::string& text, std::size_t columns) {
  std::vector<std::string> lines(1);
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (lines.back().size() + word.size() >= columns) lines.emplace_back();
    if (!lines.back().empty()) lines.back() += ' ';
    lines.back() += word;
  }
  return lines;
}

double markDistance(double range, int count) {
  const double rough = std::max(range, 1e-3) / count;
  const double power = std::pow(10, std::floor(std::log10(rough)));
  for (const double step : {1.0, 2.0, 5.0}) {
    if (rough <= step * power) return step * power;
  }
  return 10 * power;
}

}  // namespace zor::cli
