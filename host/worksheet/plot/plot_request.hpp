// The arguments of a function that draws, taken apart.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/picture.hpp"

namespace worksheet {

// What is wrong with an argument; `span` is its place.
struct PlotArgumentError : std::runtime_error {
  PlotArgumentError(Span where, const std::string& what) : std::runtime_error(what), span(where) {}
  Span span;
};

struct PlotRequest {
  // Numbers to be drawn.
  struct Data {
    Value value;
    Span span;
    std::string text;  // The expression, where it is short enough for a label.
    std::string name;  // As the worksheet names it, or empty.
    Span name_span;
  };
  std::string file;  // As the worksheet names it; empty: none.
  Span file_span;
  PictureFormat format = PictureFormat::svg;  // Of the file.
  std::string title, x_label, y_label;        // Empty unless the worksheet sets them.
  std::vector<Data> data;
};

// Throws PlotArgumentError.
PlotRequest read_plot_request(Machine& machine, std::span<const Value> arguments, Span span,
                              std::span<const Span> spans);

// The real elements of a number or a matrix in the unit `unit`, by columns. Throws
// PlotArgumentError.
std::vector<double> real_elements(const PlotRequest::Data& data, const Unit* unit);

// A label with the unit: "u in mm", "mm", "u" or nothing.
std::string label_with_unit(const std::string& label, const Unit* unit);

}  // namespace worksheet
