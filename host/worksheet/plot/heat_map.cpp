// Heat maps: heatmap.
#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/plot/draw.hpp"
#include "host/worksheet/plot/plot.hpp"

namespace worksheet {

namespace {

// The largest heat map: beyond it a picture has no pixel for an element.
constexpr std::ptrdiff_t kMostCells = 2000;

}  // namespace

Value heatmap(Machine& machine, const Call& call) {
  return draw(machine, call, [&](const PlotRequest& request, Picture& picture) {
    const PlotRequest::Data& data = request.data[0];
    if (request.data.size() > 1)
      throw PlotArgumentError(request.data[1].span, "a heat map shows one matrix");
    if (!is_matrix(data.value)) throw PlotArgumentError(data.span, "must be a matrix");
    picture.rows = matrix(data.value)->rows;
    picture.cols = matrix(data.value)->cols;
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
