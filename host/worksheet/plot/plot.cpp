#include "host/worksheet/plot/plot.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <numeric>

#include "fmt/format.h"
#include "host/efiutils/replace_file.hpp"
#include "host/packs/unit.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/plot/gnuplot.hpp"
#include "host/worksheet/plot/plot_request.hpp"
#include "host/worksheet/plot/plot_script.hpp"

namespace worksheet {

namespace {

using Arguments = std::span<const Value>;
using Spans = std::span<const Span>;
using Data = PlotRequest::Data;

// The largest heat map: beyond it a picture has no pixel for an element.
constexpr std::ptrdiff_t kMostCells = 2000;

constexpr const char* kEigenvalues = "eigenvals";

// What a step gives that went well.
const Value kDone = number_value(0.0);

std::ptrdiff_t rows_of(const Value& v) {
  return is_matrix(v) ? matrix(v)->rows : 1;
}
std::ptrdiff_t cols_of(const Value& v) {
  return is_matrix(v) ? matrix(v)->cols : 1;
}
bool is_vector(const Value& v) {
  return rows_of(v) == 1 || cols_of(v) == 1;
}

double origin_of(Machine& machine) {
  const Value& origin = machine.variable("ORIGIN")->value;
  return is_plain_real(origin) ? origin.re : 0.0;
}

// origin, origin + 1...
std::vector<double> indices(double origin, std::size_t count) {
  std::vector<double> result(count);
  std::iota(result.begin(), result.end(), origin);
  return result;
}

bool has_point(const Picture::Curve& curve) {
  for (std::size_t k = 0; k < curve.x.size(); ++k)
    if (std::isfinite(curve.x[k]) && std::isfinite(curve.y[k])) return true;
  return false;
}

std::string plural(std::size_t count, const char* what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

// --- From a picture to files ---

std::string description_of(const Picture& picture) {
  switch (picture.kind) {
    case Picture::Kind::heat_map:
      return fmt::format("heat map of {} x {} elements", picture.rows, picture.cols);
    case Picture::Kind::complex_plane:
      return "eigenvalues in the complex plane";
    case Picture::Kind::log_points:
      return "singular values over a logarithmic axis";
    default:
      return plural(picture.curves.size(), "curve");
  }
}

void write_picture(const Machine& machine, const PlotRequest& request, const std::string& content) {
  const auto path = std::filesystem::path(machine.directory) / request.file;
  if (const int error = efi::replace_file(path.lexically_normal().string(), content))
    throw PlotArgumentError(request.file_span, fmt::format("{} cannot be written: {}", request.file,
                                                           std::strerror(error)));
}

Value draw(Machine& machine, const PlotRequest& request, const Picture& picture) {
  Drawn drawn = {request.file, "", description_of(picture)};
  if (!request.file.empty()) {
    const std::string script = gnuplot_script(picture, request.format);
    write_picture(machine, request, run_gnuplot(script, &machine.interrupted));
  }
  if (machine.keeps_pictures)
    drawn.svg = run_gnuplot(gnuplot_script(picture, PictureFormat::svg), &machine.interrupted);
  machine.pictures.push_back(std::move(drawn));
  return object_value(&kNoValue);
}

// The common frame of all functions: `fill` makes the picture of the request.
template <class Fill>
Value draw(Machine& machine, Arguments arguments, Span span, Spans spans, Fill fill) {
  try {
    PlotRequest request = read_plot_request(machine, arguments, span, spans);
    Picture picture;
    picture.title = request.title;
    picture.x_label = request.x_label;
    picture.y_label = request.y_label;
    if (const Value failure = fill(request, picture); is_error(failure)) return failure;
    for (std::size_t k = 0; k < picture.curves.size() && picture.curves.size() > 1; ++k)
      if (picture.curves[k].name.empty()) picture.curves[k].name = fmt::format("curve {}", k + 1);
    return draw(machine, request, picture);
  } catch (const PlotArgumentError& error) {
    return machine.fail(error.span, error.what());
  } catch (const PlotError& error) {
    return machine.fail(span, error.what());
  }
}

// --- Curves ---

// The curves of y over x: one, or one for each column of y.
void add_curves(Machine& machine, Picture& picture, const Data& y, std::vector<double> x,
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
    if (!has_point(curve)) throw PlotArgumentError(y.span, "has no point that can be drawn");
    picture.curves.push_back(std::move(curve));
  }
}

// The number of points of each curve that a y value holds.
std::size_t curve_length(const Value& y) {
  return static_cast<std::size_t>(is_vector(y) ? rows_of(y) * cols_of(y) : rows_of(y));
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

Value draw_curves(Machine& machine, Arguments arguments, Span span, Spans spans,
                  Picture::Kind kind) {
  return draw(machine, arguments, span, spans, [&](PlotRequest& request, Picture& picture) {
    picture.kind = kind;
    const std::vector<Data>& data = request.data;
    if (data.size() == 1) {
      const Data& y = data[0];
      add_curves(machine, picture, y, indices(origin_of(machine), curve_length(y.value)),
                 y.value.unit);
      if (picture.x_label.empty()) picture.x_label = "index";
      label_curves(picture, y.value.unit);
      return kDone;
    }
    for (std::size_t k = 0; k + 1 < data.size(); k += 2) {
      const Data &x = data[k], &y = data[k + 1];
      if (!x.name.empty())
        throw PlotArgumentError(x.name_span, "a curve's name stands behind its y");
      if (!is_vector(x.value)) throw PlotArgumentError(x.span, "must be a vector");
      std::vector<double> points = real_elements(x, data[0].value.unit);
      if (points.size() != curve_length(y.value))
        throw PlotArgumentError(
            y.span,
            fmt::format("has {}, its x {}", plural(curve_length(y.value), "point"), points.size()));
      add_curves(machine, picture, y, std::move(points), data[1].value.unit);
    }
    if (data.size() % 2 != 0)
      throw PlotArgumentError(data.back().span, "curves are pairs x, y: this x has no y");
    if (picture.x_label.empty()) picture.x_label = data[0].text;
    picture.x_label = label_with_unit(picture.x_label, data[0].value.unit);
    label_curves(picture, data[1].value.unit);
    return kDone;
  });
}

// --- Spectra ---

// What the pack's function makes of each of the data: a picture's curve to be. Gives an error value
// or kDone.
Value apply_to_all(Machine& machine, const char* function, Span span, std::vector<Data>& data) {
  const Row* const row = machine.find_row(function);
  if (row == nullptr) return machine.fail(span, fmt::format("no pack gives {}", function));
  for (Data& d : data) {
    // A vector of eigenvalues is taken as it is. Eigenvalues and singular values have the unit of
    // their matrix, whatever units the pack's function is ready to take.
    const bool is_result = is_matrix(d.value) && is_vector(d.value) &&
                           element_count(matrix(d.value)) > 1 && row->name == kEigenvalues;
    if (is_result) continue;
    const Value plain = without_unit(d.value);
    const Value result = machine.call(*row, {&plain, 1}, span, {&d.span, 1});
    if (is_error(result)) return result;
    d.value = with_unit(result, d.value.unit);
  }
  return kDone;
}

// One part of complex data in the unit `unit`.
std::vector<double> part_of(const Data& data, const Unit* unit, bool imaginary) {
  const aMatrix* const m = matrix(data.value);
  const auto factor = conversion(data.value.unit, unit);
  if (!factor)
    throw PlotArgumentError(data.span, fmt::format("one axis has one unit, not {} and {}",
                                                   unit_text(unit), unit_text(data.value.unit)));
  std::vector<double> part;
  for (std::ptrdiff_t k = 0; k < element_count(m); ++k)
    part.push_back((imaginary ? im_at(m, k) : re_at(m, k)) * *factor);
  return part;
}

void name_spectra(Picture& picture, const std::vector<Data>& data) {
  for (std::size_t k = 0; k < data.size(); ++k) {
    const bool legend = data.size() > 1 || !data[k].name.empty();
    if (legend) picture.curves[k].name = data[k].name.empty() ? data[k].text : data[k].name;
    if (!has_point(picture.curves[k]))
      throw PlotArgumentError(data[k].span, "has no point that can be drawn");
  }
}

void label_if_none(std::string& label, const char* words, const Unit* unit) {
  label = label_with_unit(label.empty() ? words : label, unit);
}

}  // namespace

Value plot(Machine& machine, Arguments arguments, Span span, Spans spans) {
  return draw_curves(machine, arguments, span, spans, Picture::Kind::lines);
}

Value scatter(Machine& machine, Arguments arguments, Span span, Spans spans) {
  return draw_curves(machine, arguments, span, spans, Picture::Kind::points);
}

Value plot_eigenvals(Machine& machine, Arguments arguments, Span span, Spans spans) {
  return draw(machine, arguments, span, spans, [&](PlotRequest& request, Picture& picture) {
    const Value done = apply_to_all(machine, kEigenvalues, span, request.data);
    if (is_error(done)) return done;
    const Unit* const unit = request.data[0].value.unit;
    for (const Data& data : request.data)
      picture.curves.push_back({"", part_of(data, unit, false), part_of(data, unit, true)});
    name_spectra(picture, request.data);
    picture.kind = Picture::Kind::complex_plane;
    label_if_none(picture.x_label, "real part", unit);
    label_if_none(picture.y_label, "imaginary part", unit);
    return done;
  });
}

Value plot_svds(Machine& machine, Arguments arguments, Span span, Spans spans) {
  return draw(machine, arguments, span, spans, [&](PlotRequest& request, Picture& picture) {
    const Value done = apply_to_all(machine, "svds", span, request.data);
    if (is_error(done)) return done;
    const Unit* const unit = request.data[0].value.unit;
    std::size_t zeros = 0;
    for (const Data& data : request.data) {
      const std::vector<double> values = part_of(data, unit, false);
      const auto none = static_cast<std::size_t>(std::count(values.begin(), values.end(), 0.0));
      if (none == values.size())
        throw PlotArgumentError(data.span,
                                "all singular values are zero: a logarithm has no place "
                                "for them");
      zeros += none;
      picture.curves.push_back({"", indices(origin_of(machine), values.size()), values});
    }
    name_spectra(picture, request.data);
    picture.kind = Picture::Kind::log_points;
    if (picture.x_label.empty())
      picture.x_label = zeros == 0 ? "index" : fmt::format("index ({} more: zero)", zeros);
    label_if_none(picture.y_label, "singular value", unit);
    return done;
  });
}

// --- Heat maps ---

Value heatmap(Machine& machine, Arguments arguments, Span span, Spans spans) {
  return draw(machine, arguments, span, spans, [&](PlotRequest& request, Picture& picture) {
    const Data& data = request.data[0];
    if (request.data.size() > 1)
      throw PlotArgumentError(request.data[1].span, "a heat map shows one matrix");
    if (!is_matrix(data.value)) throw PlotArgumentError(data.span, "must be a matrix");
    picture.rows = rows_of(data.value);
    picture.cols = cols_of(data.value);
    if (picture.rows > kMostCells || picture.cols > kMostCells)
      throw PlotArgumentError(data.span,
                              fmt::format("is {}: a heat map has at most {} rows and columns",
                                          shape_text(matrix(data.value)), kMostCells));
    picture.elements = real_elements(data, data.value.unit);
    if (std::none_of(picture.elements.begin(), picture.elements.end(),
                     [](double v) { return std::isfinite(v); }))
      throw PlotArgumentError(data.span, "has no element that can be drawn");
    picture.kind = Picture::Kind::heat_map;
    picture.origin = origin_of(machine);
    picture.value_label =
        label_with_unit(data.name.empty() ? data.text : data.name, data.value.unit);
    if (picture.x_label.empty()) picture.x_label = "column";
    if (picture.y_label.empty()) picture.y_label = "row";
    return kDone;
  });
}

}  // namespace worksheet
