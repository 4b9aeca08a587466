// The functions of the language that draw.
//
//   plot(["FILE",] x, y, ["NAME",] ...)             curves through points; y alone is drawn over
//                                                   its indices
//   scatter(["FILE",] x, y, ["NAME",] ...)          the points alone
//   plot_eigenvals(["FILE",] A, ["NAME",] ...)      eigenvalues in the complex plane
//   plot_svds(["FILE",] A, ["NAME",] ...)           singular values over a logarithmic axis
//   heatmap(["FILE",] A)                            a colour for every element
//
// A text such as "x: time", "y: deflection" or "title: At the tip" among the arguments sets a
// label. The functions have no value; what they have drawn is in Machine::pictures.
#pragma once

#include "host/worksheet/engine/call.hpp"

namespace worksheet {

class Machine;

Value plot(Machine& machine, const Call& call);
Value scatter(Machine& machine, const Call& call);
Value plot_eigenvals(Machine& machine, const Call& call);
Value plot_svds(Machine& machine, const Call& call);
Value heatmap(Machine& machine, const Call& call);

}  // namespace worksheet
