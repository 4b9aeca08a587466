#include "bench/limit.hpp"

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <map>

#include "bench/peers/machine_eigen.hpp"

namespace bench {

namespace {

// What a function does to an n x n (4n x n) matrix. `bytes` are those of its passes over memory.
struct Work {
  double operations;
  double bytes = 0.0;
};

constexpr double kDouble = 8.0;

double cube(double n) {
  return n * n * n;
}

// A bidiagonalization takes two passes a step, one of which writes: over the trailing matrices of
// m x n this is their size three times.
double bidiagonal_bytes(double m, double n) {
  return 3.0 * kDouble * (m * n * n / 2.0 - cube(n) / 6.0);
}

// Householder bidiagonalization, and the iteration for values, which is of order n^2.
Work values_of(double m, double n) {
  return {4.0 * m * n * n - 4.0 / 3.0 * cube(n), bidiagonal_bytes(m, n)};
}
// With both factors accumulated and rotated: Golub and Reinsch.
Work factors_of(double m, double n) {
  return {14.0 * m * n * n + 8.0 * cube(n), bidiagonal_bytes(m, n)};
}

using Count = std::function<Work(double n)>;

const std::map<std::string, Count>& counts() {
  const auto operations = [](double factor) {
    return [=](double n) { return Work{factor * cube(n)}; };
  };
  // A complex product and sum are eight operations for two.
  constexpr double kComplex = 4.0;
  static const std::map<std::string, Count> kCounts = {
      {"lu", operations(2.0 / 3.0)},
      {"lu complex", operations(kComplex * 2.0 / 3.0)},
      {"inv", operations(2.0)},
      {"inv complex", operations(kComplex * 2.0)},
      {"lsolve", [](double n) { return Work{2.0 / 3.0 * cube(n) + 2.0 * n * n}; }},
      {"lsolve complex", [](double n) { return Work{8.0 / 3.0 * cube(n) + 8.0 * n * n}; }},
      {"cholesky", operations(1.0 / 3.0)},
      // Rotations of neighbouring rows, six operations an element: n^2 / 2 of them, on the rest of
      // R and on all of Q.
      {"qr", operations(5.0)},
      {"rref", operations(2.0)},
      {"norm1",
       [](double n) {
         return Work{n * n, kDouble * n * n};
       }},
      {"normi",
       [](double n) {
         return Work{n * n, kDouble * n * n};
       }},
      {"norme",
       [](double n) {
         return Work{2.0 * n * n, kDouble * n * n};
       }},
      {"norm2", [](double n) { return values_of(n, n); }},
      {"cond2", [](double n) { return values_of(n, n); }},
      {"cond1", operations(2.0)},
      {"cond1 complex", operations(kComplex * 2.0)},
      {"svds", [](double n) { return values_of(n, n); }},
      {"svds 4n x n", [](double n) { return values_of(4.0 * n, n); }},
      {"svd", [](double n) { return factors_of(n, n); }},
      {"svd 4n x n", [](double n) { return factors_of(4.0 * n, n); }},
      {"svd by dgesvd", [](double n) { return factors_of(n, n); }},
      {"geninv",
       [](double n) {
         return Work{24.0 * cube(n), bidiagonal_bytes(n, n)};
       }},
      // One pass a step over the triangle, which it writes.
      {"eigenvals symmetric",
       [](double n) {
         return Work{4.0 / 3.0 * cube(n), kDouble * cube(n) / 3.0};
       }},
      {"eigenvecs symmetric",
       [](double n) {
         return Work{9.0 * cube(n), kDouble * cube(n) / 3.0};
       }},
      {"eigenvals general", operations(10.0 - 5.0 / 3.0)},
      {"eigenvecs general", operations(25.0)},
      {"eigenvals complex", operations(kComplex * 10.0)},
      {"eigenvecs complex", operations(kComplex * 25.0)},
      {"hermitian values", operations(kComplex * 4.0 / 3.0)},
      {"genvals", operations(30.0)},
      {"genvecs", operations(66.0)},
  };
  return kCounts;
}

}  // namespace

Machine measure_machine() {
  const double second_cache =
      static_cast<double>(std::max(sysconf(_SC_LEVEL2_CACHE_SIZE), 1L << 20));
  return {eigen::peak_operations(), eigen::bandwidth(static_cast<std::size_t>(4.0 * second_cache))};
}

std::optional<double> limit(const Machine& machine, const std::string& function, int n) {
  const auto count = counts().find(function);
  if (count == counts().end()) return std::nullopt;
  const Work work = count->second(n);
  const bool tall = function.ends_with("4n x n");
  const double size =
      kDouble * n * n * (tall ? 4.0 : 1.0) * (function.ends_with("complex") ? 2.0 : 1.0);
  const double arithmetic = work.operations / machine.operations;
  const bool outgrows = size > static_cast<double>(sysconf(_SC_LEVEL2_CACHE_SIZE));
  return outgrows ? std::max(arithmetic, work.bytes / machine.bandwidth) : arithmetic;
}

}  // namespace bench
