// The least time in which this machine can do what a function documents.
//
// The operations of the documented method, each rounded on its own, at the processor's measured
// peak of multiplications and additions that are not fused. The steps of a reduction, each of which
// waits for the one before, may take longer than that: as long as their passes at the measured
// bandwidth, where what is left of the matrix outgrows the second cache. The counts are those of
// Golub and Van Loan, Matrix Computations, unless the method is another one. docs/performance.md
// explains them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace bench {

// Bytes a second, read and written, of an array of so many bytes.
struct Bandwidth {
  double bytes;
  double rate;
};

struct Machine {
  double operations;                  // A second, of one core.
  std::vector<Bandwidth> bandwidths;  // Of arrays beyond the second cache, in ascending order.
};

// Measures; takes about a second.
Machine measure_machine();

// Seconds; none for a function without a count.
std::optional<double> limit(const Machine& machine, const std::string& function, int n);

}  // namespace bench
