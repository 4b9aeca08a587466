// The arguments of a function that draws, taken apart.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host/worksheet/engine/call.hpp"
#include "host/worksheet/plot/picture.hpp"

namespace worksheet {

class Machine;

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
PlotRequest read_plot_request(Machine& machine, const Call& call);

// What the data's numbers are to be multiplied by to be in the unit of their axis. Throws
// PlotArgumentError.
double factor_to(const PlotRequest::Data& data, const Unit* unit);

// The real elements of a number or a matrix in the unit `unit`, by columns. Throws
// PlotArgumentError.
std::vector<double> real_elements(const PlotRequest::Data& data, const Unit* unit);

// A label with the unit: "u in mm", "mm", "u" or nothing.
std::string label_with_unit(const std::string& label, const Unit* unit);

}  // namespace worksheet
