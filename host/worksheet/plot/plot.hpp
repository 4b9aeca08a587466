// The functions of the language that draw.
//
//   plot(["FILE",] x, y, ["NAME",] ...)      curves through points; y alone is drawn over its
//   indices scatter(["FILE",] x, y, ["NAME",] ...)   the points alone plot_eigenvals(["FILE",] A,
//   ["NAME",] ...)   eigenvalues in the complex plane plot_svds(["FILE",] A, ["NAME",] ...)
//   singular values over a logarithmic axis heatmap(["FILE",] A)                     a colour for
//   every element
//
// A text such as "x: time", "y: deflection" or "title: At the tip" among the arguments sets a
// label. The functions have no value; what they have drawn is in Machine::pictures.
#pragma once

#include <span>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

Value plot(Machine& machine, std::span<const Value> arguments, Span span,
           std::span<const Span> spans);
Value scatter(Machine& machine, std::span<const Value> arguments, Span span,
              std::span<const Span> spans);
Value plot_eigenvals(Machine& machine, std::span<const Value> arguments, Span span,
                     std::span<const Span> spans);
Value plot_svds(Machine& machine, std::span<const Value> arguments, Span span,
                std::span<const Span> spans);
Value heatmap(Machine& machine, std::span<const Value> arguments, Span span,
              std::span<const Span> spans);

}  // namespace worksheet
