// The frame of all functions that draw: from arguments by way of a picture to a file.
#pragma once

#include <functional>
#include <vector>

#include "host/worksheet/engine/call.hpp"
#include "host/worksheet/plot/picture.hpp"
#include "host/worksheet/plot/plot_request.hpp"

namespace worksheet {

class Machine;

// The value of a step without an error.
inline const Value kDone = number_value(0.0);

// Makes a picture of what the request asks for; gives kDone or an error value. Throws
// PlotArgumentError.
using Fill = std::function<Value(PlotRequest& request, Picture& picture)>;

// Reads the arguments, lets `fill` make the picture, and draws it.
Value draw(Machine& machine, const Call& call, const Fill& fill);

// --- For those who make pictures ---

bool is_vector(const Value& v);

// The index of the first element.
double origin_of(const Machine& machine);
// origin, origin + 1...
std::vector<double> indices(double origin, std::size_t count);

// Throws PlotArgumentError for data whose curve has no point that can be drawn.
void require_point(const Picture::Curve& curve, const PlotRequest::Data& data);

}  // namespace worksheet
