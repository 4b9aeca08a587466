#include "host/worksheet/plot/plot_script.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "fmt/format.h"

namespace worksheet {

namespace {

// gnuplot takes what lies close to the largest double for undefined.
constexpr double kLargestDrawn = 1e300;

// gnuplot leaves a gap at a NaN.
constexpr double kNoDatum = std::numeric_limits<double>::quiet_NaN();

// Curves with no more points than these show each of them.
constexpr std::size_t kMostMarkedPoints = 24;

// Beyond this ratio of the two ranges a picture with one scale for both axes would be too narrow.
constexpr double kMostStretch = 4.0;

// Larger heat maps are embedded images; smaller ones a rectangle for each element.
constexpr std::ptrdiff_t kMostRectangles = 4096;

bool can_be_drawn(double v) {
  return std::fabs(v) <= kLargestDrawn;
}

// Text that gnuplot takes literally: in single quotes nothing is replaced.
std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) {
    if (c == '\'') result += '\'';
    result += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? ' ' : c;
  }
  return result + "'";
}

struct Extent {
  double low = std::numeric_limits<double>::infinity();
  double high = -low;

  void take(double v) {
    low = std::min(low, v);
    high = std::max(high, v);
  }
  double size() const { return high - low; }
};

// What an axis leaves free on both sides of its data, as shares of the picture. One that begins or
// ends at zero, or nearly so, does so with the axis.
struct Margins {
  double low, high;
  bool from_zero = false, to_zero = false;

  Margins(const Extent& data, double share) : low(share), high(share) {
    if (!(data.size() > 0.0)) return;
    from_zero = data.low >= 0.0 && data.low <= share * data.size();
    to_zero = data.high <= 0.0 && -data.high <= share * data.size();
    if (from_zero) low = 0.0;
    if (to_zero) high = 0.0;
  }
};

// A picture's script under construction.
class Script {
 public:
  Script(const Picture& picture, PictureFormat format) : picture_(picture), format_(format) {}

  std::string text() {
    frame();
    if (picture_.kind == Picture::Kind::heat_map)
      heat_map();
    else
      curves();
    return std::move(text_);
  }

 private:
  template <class... Arguments>
  void add(fmt::format_string<Arguments...> form, Arguments&&... arguments) {
    text_.append(fmt::vformat(form, fmt::make_format_args(arguments...))).append("\n");
  }

  // What all pictures have in common.
  void frame() {
    if (format_ == PictureFormat::svg)
      add("set terminal svg size 640,400 dynamic enhanced font 'sans-serif,13'");
    else if (format_ == PictureFormat::page)
      add("set terminal svg size 480,320 dynamic enhanced font 'sans-serif,14'");
    else
      add("set terminal pngcairo size 1280,800 enhanced font 'sans-serif,20' linewidth 2 "
          "pointscale 2 background '#ffffff'");
    add("set encoding utf8\nset minussign\nset tics nomirror out scale 0.5");
    add("set border 3 linewidth 0.8 linecolor rgb '{}'", kInk);
    for (const char* axis : {"x", "y", "cb"}) add("set {}tics textcolor rgb '{}'", axis, kInk);
    label("title", picture_.title);
    label("xlabel", picture_.x_label);
    label("ylabel", picture_.y_label);
  }

  void label(const char* which, const std::string& words) {
    if (!words.empty()) add("set {} {} noenhanced textcolor rgb '{}'", which, quoted(words), kInk);
  }

  void curves() {
    add("set grid linetype 1 linewidth 0.6 linecolor rgb '{}'", kGrid);
    add("set key bottom outside center horizontal Left reverse height 1 noenhanced textcolor rgb "
        "'{}'",
        kInk);
    if (picture_.kind == Picture::Kind::complex_plane) complex_axes();
    add("set autoscale xfix");
    if (picture_.kind == Picture::Kind::log_points)
      add("set logscale y\nset format y '10^{{%T}}'\nset offsets graph 0.02, graph 0.02, 0, 0");
    else
      margins();
    text_ += "plot ";
    for (std::size_t k = 0; k < picture_.curves.size(); ++k) curve(k);
    text_ += '\n';
    for (const Picture::Curve& curve : picture_.curves) data(curve);
  }

  // The extents of the points, along x and y.
  std::pair<Extent, Extent> extents() const {
    Extent x, y;
    for (const Picture::Curve& curve : picture_.curves)
      for (std::size_t k = 0; k < curve.x.size(); ++k)
        if (can_be_drawn(curve.x[k]) && can_be_drawn(curve.y[k])) {
          x.take(curve.x[k]);
          y.take(curve.y[k]);
        }
    return {x, y};
  }

  void margins() {
    const auto [x_extent, y_extent] = extents();
    const bool plane = picture_.kind == Picture::Kind::complex_plane;
    const Margins x(plane ? Extent() : x_extent, 0.02), y(plane ? Extent() : y_extent, 0.04);
    add("set offsets graph {}, graph {}, graph {}, graph {}", x.low, x.high, y.high, y.low);
    for (const auto& [axis, margin] : {std::pair('x', x), std::pair('y', y)}) {
      if (margin.from_zero) add("set {}range [0:*]", axis);
      if (margin.to_zero) add("set {}range [*:0]", axis);
    }
  }

  void complex_axes() {
    const auto [re, im] = extents();
    for (const char axis : {'x', 'y'})
      add("set {}zeroaxis linetype 1 linewidth 0.8 linecolor rgb '{}'", axis, kInk);
    const double ratio = re.size() / im.size();
    if (ratio <= kMostStretch && ratio >= 1 / kMostStretch) add("set size ratio -1");
  }

  // Appends a number in binary, which gnuplot reads faster than text.
  void datum(double v) { text_.append(reinterpret_cast<const char*>(&v), sizeof v); }

  // The points; NaN makes a gap.
  void data(const Picture::Curve& curve) {
    for (std::size_t k = 0; k < curve.x.size(); ++k) {
      const bool drawn = can_be_drawn(curve.x[k]) && can_be_drawn(curve.y[k]) &&
                         (curve.y[k] > 0.0 || picture_.kind != Picture::Kind::log_points);
      datum(drawn ? curve.x[k] : kNoDatum);
      datum(drawn ? curve.y[k] : kNoDatum);
    }
  }

  void curve(std::size_t which) {
    const Picture::Curve& curve = picture_.curves[which];
    const char* const colour = kCurveColours[which % std::size(kCurveColours)];
    const bool joined =
        picture_.kind == Picture::Kind::lines || picture_.kind == Picture::Kind::log_points;
    const bool marked = !joined || curve.x.size() <= kMostMarkedPoints;
    text_ += fmt::format(
        "{}'-' binary record=({}) format='%double%double' using 1:2 with {} linecolor rgb '{}'",
        which == 0 ? "" : ", ", curve.x.size(),
        !joined  ? "points"
        : marked ? "linespoints"
                 : "lines",
        colour);
    if (joined) text_ += " linewidth 1.6";
    if (marked) text_ += joined ? " pointtype 7 pointsize 0.45" : " pointtype 7 pointsize 0.75";
    text_ += picture_.curves.size() == 1 && curve.name.empty() ? " notitle"
                                                               : " title " + quoted(curve.name);
  }

  void heat_map() {
    Extent values;
    for (const double v : picture_.elements)
      if (can_be_drawn(v)) values.take(v);
    palette(values);
    label("cblabel", picture_.value_label);
    add("set cblabel offset 1.5,0");
    const std::ptrdiff_t rows = picture_.rows, cols = picture_.cols;
    const double first = picture_.origin;
    add("set xrange [{}:{}]", first - 0.5, first + static_cast<double>(cols) - 0.5);
    add("set yrange [{}:{}]", first + static_cast<double>(rows) - 0.5, first - 0.5);
    add("set border 15\nset colorbox noborder\nset format cb '%g'");
    const double ratio = static_cast<double>(cols) / static_cast<double>(rows);
    const bool square_cells = ratio <= kMostStretch && ratio >= 1 / kMostStretch;
    add("{}", square_cells ? "set size ratio -1" : "set rmargin at screen 0.8");
    for (const auto& [axis, count] : {std::pair('x', cols), std::pair('y', rows)})
      if (count <= 12) add("set {}tics {}, 1", axis, first);
    // gnuplot has no image of a single row or column: it gets two of half the width.
    const std::ptrdiff_t down = rows == 1 ? 2 : 1, across = cols == 1 ? 2 : 1;
    auto centre = [&](std::ptrdiff_t times) { return times == 2 ? first - 0.25 : first; };
    add("plot '-' binary array=({},{}) origin=({},{}) dx={} dy={} format='%double' with image{} "
        "notitle",
        cols * across, rows * down, centre(across), centre(down), 1.0 / static_cast<double>(across),
        1.0 / static_cast<double>(down), rows * cols <= kMostRectangles ? " pixels" : "");
    for (std::ptrdiff_t i = 0; i < rows * down; ++i)
      for (std::ptrdiff_t j = 0; j < cols * across; ++j) {
        const double v = picture_.elements[static_cast<std::size_t>(j / across * rows + i / down)];
        datum(can_be_drawn(v) ? v : kNoDatum);
      }
  }

  // One hue for values of one sign; two, white between them at zero, where there are both.
  void palette(const Extent& values) {
    if (values.low < 0.0 && values.high > 0.0) {
      const double most = std::max(-values.low, values.high);
      add("set cbrange [{}:{}]", -most, most);
      add("set palette defined (0 '#1d4f91', 0.25 '#7aa6d1', 0.5 '#f7f7f5', 0.75 '#e0936a', "
          "1 '#a03a16')");
    } else {
      if (values.low == values.high && values.low == 0.0) add("set cbrange [0:1]");
      add("set palette defined (0 '#f4f6f2', 1 '#a8c9c4', 2 '#4a8fa3', 3 '#1b3f66')");
      if (values.low < 0.0) add("set palette negative");
    }
  }

  const Picture& picture_;
  const PictureFormat format_;
  std::string text_;
};

}  // namespace

std::string gnuplot_script(const Picture& picture, PictureFormat format) {
  return Script(picture, format).text();
}

}  // namespace worksheet
