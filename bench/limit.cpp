#include "bench/limit.hpp"

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <map>

#include "bench/peers/machine_eigen.hpp"

namespace bench {

namespace {

constexpr double kDouble = 8.0;

double cube(double n) {
  return n * n * n;
}

// A reduction: step k works on what is left of an m x n matrix without its first k rows and
// columns. What it does to each element:
struct Steps {
  double m;
  double n;
  double operations;
  double bytes;  // That its passes over memory read and write.
  double size;   // Of the part of the element that is stored.
};

// What a function does to an n x n (4n x n) matrix: steps, and operations besides.
struct Work {
  double operations;
  std::optional<Steps> steps = std::nullopt;
};

// Householder bidiagonalization, 4 m n^2 - 4/3 n^3 operations in all. Two passes a step, one of
// which writes.
Steps bidiagonalization(double m, double n) {
  return {m, n, 8.0, 3.0 * kDouble, kDouble};
}
// Householder tridiagonalization, 4/3 n^3 operations. One pass a step over the triangle, which it
// writes.
Steps tridiagonalization(double n) {
  return {n, n, 4.0, kDouble, kDouble / 2.0};
}
// One pass that reads.
Steps one_pass(double n, double operations) {
  return {n * n, 1.0, operations, kDouble, kDouble};
}

// The iteration for values alone is of order n^2.
Work values_of(double m, double n) {
  return {0.0, bidiagonalization(m, n)};
}
// With both factors accumulated and rotated, 14 m n^2 + 8 n^3 operations in all: Golub and Reinsch.
Work factors_of(double m, double n) {
  return {10.0 * m * n * n + (8.0 + 4.0 / 3.0) * cube(n), bidiagonalization(m, n)};
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
         return Work{0.0, one_pass(n, 1.0)};
       }},
      {"normi",
       [](double n) {
         return Work{0.0, one_pass(n, 1.0)};
       }},
      {"norme",
       [](double n) {
         return Work{0.0, one_pass(n, 2.0)};
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
      // The factors, and a product.
      {"geninv",
       [](double n) {
         return Work{factors_of(n, n).operations + 2.0 * cube(n), bidiagonalization(n, n)};
       }},
      {"eigenvals symmetric",
       [](double n) {
         return Work{0.0, tridiagonalization(n)};
       }},
      {"eigenvecs symmetric",
       [](double n) {
         return Work{(9.0 - 4.0 / 3.0) * cube(n), tridiagonalization(n)};
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

double second_cache() {
  return static_cast<double>(std::max(sysconf(_SC_LEVEL2_CACHE_SIZE), 1L << 20));
}

// That of an array of so many bytes: between those of the arrays that were measured.
double bandwidth(const Machine& machine, double bytes) {
  Bandwidth below = machine.bandwidths.front();
  for (const Bandwidth& above : machine.bandwidths) {
    if (bytes <= below.bytes) break;
    if (bytes < above.bytes)
      return below.rate +
             (above.rate - below.rate) * (bytes - below.bytes) / (above.bytes - below.bytes);
    below = above;
  }
  return below.rate;
}

// Each step takes its operations, or, where what is left outgrows the second cache, its passes,
// whichever is longer.
double time_of(const Machine& machine, const Steps& steps) {
  double time = 0.0;
  for (double k = 0.0; k < steps.n; ++k) {
    const double elements = (steps.m - k) * (steps.n - k);
    const double size = elements * steps.size;
    const double arithmetic = elements * steps.operations / machine.operations;
    const double passes = elements * steps.bytes / bandwidth(machine, size);
    time += size > second_cache() ? std::max(arithmetic, passes) : arithmetic;
  }
  return time;
}

}  // namespace

Machine measure_machine() {
  Machine machine = {eigen::peak_operations(), {}};
  for (const double caches : {2.0, 4.0, 8.0, 16.0}) {
    const double bytes = caches * second_cache();
    machine.bandwidths.push_back({bytes, eigen::bandwidth(static_cast<std::size_t>(bytes))});
  }
  return machine;
}

std::optional<double> limit(const Machine& machine, const std::string& function, int n) {
  const auto count = counts().find(function);
  if (count == counts().end()) return std::nullopt;
  const Work work = count->second(n);
  return work.operations / machine.operations + (work.steps ? time_of(machine, *work.steps) : 0.0);
}

}  // namespace bench
