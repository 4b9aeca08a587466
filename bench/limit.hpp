// The least time in which this machine can do what a function documents.
//
// The operations of the documented method, each rounded on its own, at the processor's measured
// peak of multiplications and additions that are not fused; or its passes over memory at the
// measured bandwidth, for data that outgrow the second cache; whichever takes longer. The counts
// are those of Golub and Van Loan, Matrix Computations, unless the method is another one.
// docs/performance.md explains them.
#pragma once

#include <optional>
#include <string>

namespace bench {

struct Machine {
  double operations;  // A second, of one core.
  double bandwidth;   // Bytes a second, read and written, beyond the second cache.
};

// Measures; takes about half a second.
Machine measure_machine();

// Seconds; none for a function without a count.
std::optional<double> limit(const Machine& machine, const std::string& function, int n);

}  // namespace bench
