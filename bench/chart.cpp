#include "bench/chart.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>

#include "tool/axis.h"

namespace xfm::bench {

namespace {

using tool::Align;
using tool::Colour;
using tool::Picture;

constexpr int kPanelWidth = 520, kPanelHeight = 360, kLeft = 64, kRight = 16, kTop = 34, kBottom = 52, kLegend = 40;

// How a series is drawn: the copies of this library in full lines, rivals dashed; lightness tells them apart in grey.
struct Style {
  Colour colour;
  std::vector<double> dashes;
};
const std::map<std::string, Style> kStyles = {{"base", {{20, 50, 140}, {}}},          {"x86-64-v3", {{0, 130, 200}, {}}},
                                              {"x86-64-v4", {{80, 190, 150}, {}}},    {"FFTW", {{200, 50, 40}, {6, 3}}},
                                              {"half-length", {{200, 50, 40}, {6, 3}}}, {"loop", {{150, 110, 30}, {2, 2}}},
                                              {"REDFT11", {{150, 110, 30}, {2, 2}}}};

Style style_of(const std::string& name) {
  const auto found = kStyles.find(name);
  return found == kStyles.end() ? Style{{120, 120, 120}, {8, 2, 2, 2}} : found->second;
}

struct Panel {
  std::string function;
  std::vector<std::pair<size_t, Picture::Points>> series;  // index into the legend; (N, ns)
};

struct Chart {
  std::vector<std::string> legend;
  std::vector<Panel> panels;
};

size_t index_of(std::vector<std::string>& names, const std::string& name) {
  const auto index = static_cast<size_t>(std::find(names.begin(), names.end(), name) - names.begin());
  if (index == names.size()) names.push_back(name);
  return index;
}

void add(Chart& chart, const Report& report) {
  for (size_t c = 0; c < report.columns().size(); ++c) {
    if (!report.columns()[c].plotted) continue;
    std::string name = report.columns()[c].name;
    name.resize(name.size() - std::string(" ns").size());
    for (const Row& row : report.rows()) {
      const double ns = std::get<double>(row[c]);
      if (ns == 0) continue;
      const std::string& function = std::get<std::string>(row[0]);
      auto panel = std::find_if(chart.panels.begin(), chart.panels.end(), [&](const Panel& p) { return p.function == function; });
      if (panel == chart.panels.end()) panel = chart.panels.insert(panel, {function, {}});
      const size_t index = index_of(chart.legend, name);
      if (panel->series.empty() || panel->series.back().first != index) panel->series.push_back({index, {}});
      panel->series.back().second.emplace_back(std::get<double>(row[1]), ns);
    }
  }
}

// Lengths and times within the panel at (left, top).
struct Scale {
  double left, top, least_n, most_n, least_ns, most_ns;
  bool powers = false;  // lengths are powers of two, on a logarithmic axis

  static double share(double value, double least, double most) { return std::log(value / least) / std::log(most / least); }
  double x(double n) const {
    const double at = powers ? share(n, least_n, most_n) : (n - least_n) / (most_n - least_n);
    return left + at * (kPanelWidth - kLeft - kRight);
  }
  double y(double ns) const { return top + (1 - share(ns, least_ns, most_ns)) * (kPanelHeight - kTop - kBottom); }
};

Scale scale_of(const Panel& panel, double left, double top) {
  Scale s{left, top, 1e300, 0, 1e300, 0};
  for (const auto& [index, points] : panel.series)
    for (const auto& [n, ns] : points) {
      s.least_n = std::min(s.least_n, n), s.most_n = std::max(s.most_n, n);
      s.least_ns = std::min(s.least_ns, ns), s.most_ns = std::max(s.most_ns, ns);
    }
  s.powers = s.most_n > 64;
  if (s.most_n == s.least_n) s.least_n /= 2, s.most_n *= 2;
  s.least_ns /= 1.2, s.most_ns *= 1.2;
  return s;
}

std::vector<tool::Mark> length_marks(const Scale& s) {
  std::vector<tool::Mark> marks;
  if (!s.powers) {
    for (double n = std::ceil(s.least_n / 8) * 8; n <= s.most_n; n += 8) marks.push_back({n, std::to_string(static_cast<int>(n))});
    return marks;
  }
  const int first = static_cast<int>(std::ceil(std::log2(s.least_n))), last = static_cast<int>(std::log2(s.most_n));
  for (int e = first; e <= last; e += last - first > 13 ? 2 : 1)
    marks.push_back({std::exp2(e), e > 13 ? "2^" + std::to_string(e) : std::to_string(1 << e)});
  return marks;
}

void draw_axes(Picture& picture, const Panel& panel, const Scale& s) {
  const double right = s.x(s.most_n), bottom = s.y(s.least_ns);
  for (const auto& [n, text] : length_marks(s)) {
    picture.line({{s.x(n), s.top}, {s.x(n), bottom}}, tool::kFaint);
    picture.text(s.x(n), bottom + 13, text, Align::Centre, 11);
  }
  const std::vector<tool::Mark> marks = tool::decade_marks(s.least_ns, s.most_ns);
  const bool crowded = s.most_ns / s.least_ns > 1e4;
  for (const tool::Mark& mark : marks) {
    if (crowded && std::abs(std::log10(mark.value) - std::round(std::log10(mark.value))) > 1e-9) continue;
    const double y = s.y(mark.value);
    picture.line({{s.left, y}, {right, y}}, tool::kFaint);
    picture.text(s.left - 6, y, mark.text, Align::Right, 11);
  }
  picture.frame(static_cast<int>(s.left), static_cast<int>(s.top), static_cast<int>(right - s.left), static_cast<int>(bottom - s.top), tool::kInk);
  picture.text((s.left + right) / 2, bottom + 32, "points", Align::Centre, 12);
  picture.upright_text(s.left - 52, (s.top + bottom) / 2, "nanoseconds a call", 12);
  picture.text((s.left + right) / 2, s.top - 14, panel.function, Align::Centre, 13);
}

void draw_legend(Picture& picture, const std::vector<std::string>& legend, int width) {
  const double step = std::min(150.0, (width - 40.0) / static_cast<double>(legend.size()));
  double x = (width - step * static_cast<double>(legend.size())) / 2;
  for (size_t i = 0; i < legend.size(); ++i, x += step) {
    const Style style = style_of(legend[i]);
    picture.line({{x, kLegend / 2.0}, {x + 30, kLegend / 2.0}}, style.colour, 2, style.dashes);
    picture.text(x + 36, kLegend / 2.0, legend[i]);
  }
}

}  // namespace

std::string draw_chart(const std::vector<Report>& reports, tool::PictureFormat format) {
  Chart chart;
  for (const Report& report : reports) add(chart, report);
  if (chart.panels.empty()) throw std::runtime_error("these results have no times by length to plot");
  const int columns = chart.panels.size() > 1 ? 2 : 1, rows = static_cast<int>((chart.panels.size() + columns - 1) / columns);
  const int width = columns * kPanelWidth;
  Picture picture(format, width, kLegend + rows * kPanelHeight);
  draw_legend(picture, chart.legend, width);
  for (size_t i = 0; i < chart.panels.size(); ++i) {
    const Scale s = scale_of(chart.panels[i], kLeft + static_cast<double>(i % columns) * kPanelWidth,
                             kLegend + kTop + static_cast<double>(i / columns) * kPanelHeight);
    draw_axes(picture, chart.panels[i], s);
    for (const auto& [index, points] : chart.panels[i].series) {
      const Style style = style_of(chart.legend[index]);
      Picture::Points places;
      for (const auto& [n, ns] : points) places.emplace_back(s.x(n), s.y(ns));
      picture.line(places, style.colour, 1.6, style.dashes);
      for (const auto& [x, y] : places) picture.dot(x, y, 1.8, style.colour);
    }
  }
  return picture.bytes();
}

}  // namespace xfm::bench
