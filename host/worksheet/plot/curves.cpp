// Curves through points: plot and scatter.
#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/plot/draw.hpp"
#include "host/worksheet/plot/plot.hpp"

namespace worksheet {

namespace {

using Data = PlotRequest::Data;

// The curves of y over x: one, or one for each column of y.
void add_curves(const Machine& machine, Picture& picture, const Data& y, std::vector<double> x,
                const Unit* unit) {
  const std::vector<double> elements = real_elements(y, unit);
  const std::size_t length = x.size();
  if (length == 0) throw PlotArgumentError(y.span, "has no point that can be drawn");
  const std::string name = !y.name.empty() ? y.name : y.text;
  const std::size_t count = elements.size() / length;
  for (std::size_t k = 0; k < count; ++k) {
    Picture::Curve curve;
    curve.name = count == 1 ? name
                            : fmt::format("{}{}column {}", name, name.empty() ? "" : ", ",
                                          origin_of(machine) + static_cast<double>(k));
    curve.x = x;
    curve.y.assign(elements.begin() + static_cast<std::ptrdiff_t>(k * length),
                   elements.begin() + static_cast<std::ptrdiff_t>((k + 1) * length));
    require_point(curve, y);
    picture.curves.push_back(std::move(curve));
  }
}

// The number of points of each curve that a y value holds.
std::size_t curve_length(const Value& y) {
  if (is_number(y)) return 1;
  const aMatrix* const m = matrix(y);
  return static_cast<std::size_t>(is_vector(y) ? element_count(m) : m->rows);
}

// One curve is named by its axis, several by a legend.
void label_curves(Picture& picture, const Unit* unit) {
  const bool single = picture.curves.size() == 1;
  const std::string label = !picture.y_label.empty() ? picture.y_label
                            : single                 ? picture.curves[0].name
                                                     : "";
  picture.y_label = label_with_unit(label, unit);
  if (single) picture.curves[0].name.clear();
}

// y alone, over its indices.
void fill_with_one(const Machine& machine, const Data& y, Picture& picture) {
  add_curves(machine, picture, y, indices(origin_of(machine), curve_length(y.value)), y.value.unit);
  if (picture.x_label.empty()) picture.x_label = "index";
  label_curves(picture, y.value.unit);
}

// x, y, x, y...; the units of the first pair are those of the axes.
void fill_with_pairs(const Machine& machine, const std::vector<Data>& data, Picture& picture) {
  for (std::size_t k = 0; k + 1 < data.size(); k += 2) {
    const Data &x = data[k], &y = data[k + 1];
    if (!x.name.empty()) throw PlotArgumentError(x.name_span, "a curve's name stands behind its y");
    if (!is_vector(x.value)) throw PlotArgumentError(x.span, "must be a vector");
    std::vector<double> points = real_elements(x, data[0].value.unit);
    const std::size_t length = curve_length(y.value);
    if (points.size() != length)
      throw PlotArgumentError(
          y.span, fmt::format("has {}, its x {}", counted(length, "point"), points.size()));
    add_curves(machine, picture, y, std::move(points), data[1].value.unit);
  }
  if (data.size() % 2 != 0)
    throw PlotArgumentError(data.back().span, "curves are pairs x, y: this x has no y");
  if (picture.x_label.empty()) picture.x_label = data[0].text;
  picture.x_label = label_with_unit(picture.x_label, data[0].value.unit);
  label_curves(picture, data[1].value.unit);
}

Value draw_curves(Machine& machine, const Call& call, Picture::Kind kind) {
  return draw(machine, call, [&](const PlotRequest& request, Picture& picture) {
    picture.kind = kind;
    if (request.data.size() == 1)
      fill_with_one(machine, request.data[0], picture);
    else
      fill_with_pairs(machine, request.data, picture);
    return kDone;
  });
}

}  // namespace

Value plot(Machine& machine, const Call& call) {
  return draw_curves(machine, call, Picture::Kind::lines);
}

Value scatter(Machine& machine, const Call& call) {
  return draw_curves(machine, call, Picture::Kind::points);
}

}  // namespace worksheet
