// Eigenvalues and singular values: plot_eigenvals and plot_svds.
#include <algorithm>

#include "fmt/format.h"
#include "host/units/unit.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/plot/draw.hpp"
#include "host/worksheet/plot/plot.hpp"

namespace worksheet {

namespace {

using Data = PlotRequest::Data;

constexpr const char* kEigenvalues = "eigenvals";

// Replaces each of the data by what the pack's function gives for it. Gives an error value or
// kDone.
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
    const Value result = machine.call(*row, {{&plain, 1}, span, {&d.span, 1}});
    if (is_error(result)) return result;
    d.value = with_unit(result, d.value.unit);
  }
  return kDone;
}

// One part of complex data in the unit `unit`.
std::vector<double> part_of(const Data& data, const Unit* unit, bool imaginary) {
  const aMatrix* const m = matrix(data.value);
  const double factor = factor_to(data, unit);
  std::vector<double> part;
  for (std::ptrdiff_t k = 0; k < element_count(m); ++k)
    part.push_back((imaginary ? im_at(m, k) : re_at(m, k)) * factor);
  return part;
}

void name_spectra(Picture& picture, const std::vector<Data>& data) {
  for (std::size_t k = 0; k < data.size(); ++k) {
    const bool legend = data.size() > 1 || !data[k].name.empty();
    if (legend) picture.curves[k].name = data[k].name.empty() ? data[k].text : data[k].name;
    require_point(picture.curves[k], data[k]);
  }
}

void label_if_none(std::string& label, const char* words, const Unit* unit) {
  label = label_with_unit(label.empty() ? words : label, unit);
}

// The singular values over their indices; gives the number of zeros, which a logarithm has no place
// for.
std::size_t add_singular_values(const Machine& machine, Picture& picture, const Data& data,
                                const Unit* unit) {
  const std::vector<double> values = part_of(data, unit, false);
  const auto zeros = static_cast<std::size_t>(std::count(values.begin(), values.end(), 0.0));
  if (zeros == values.size())
    throw PlotArgumentError(data.span,
                            "all singular values are zero: a logarithm has no place for them");
  picture.curves.push_back({"", indices(origin_of(machine), values.size()), values});
  return zeros;
}

}  // namespace

Value plot_eigenvals(Machine& machine, const Call& call) {
  return draw(machine, call, [&](PlotRequest& request, Picture& picture) {
    const Value done = apply_to_all(machine, kEigenvalues, call.span, request.data);
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

Value plot_svds(Machine& machine, const Call& call) {
  return draw(machine, call, [&](PlotRequest& request, Picture& picture) {
    const Value done = apply_to_all(machine, "svds", call.span, request.data);
    if (is_error(done)) return done;
    const Unit* const unit = request.data[0].value.unit;
    std::size_t zeros = 0;
    for (const Data& data : request.data)
      zeros += add_singular_values(machine, picture, data, unit);
    name_spectra(picture, request.data);
    picture.kind = Picture::Kind::log_points;
    if (picture.x_label.empty())
      picture.x_label = zeros == 0 ? "index" : fmt::format("index ({} more: zero)", zeros);
    label_if_none(picture.y_label, "singular value", unit);
    return done;
  });
}

}  // namespace worksheet
