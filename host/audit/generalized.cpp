// The check of genvals.
#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/audit/second_call.hpp"

namespace audit {

namespace {

// The distance of two values on the sphere of numbers: at most 1, and small between any two that
// are large (G. W. Stewart, J. Sun, Matrix Perturbation Theory, section VI.1).
double chordal(const Complex& x, const Complex& y) {
  const double a = std::abs(x), b = std::abs(y);
  if (a > 1.0 && b > 1.0) return chordal(1.0 / x, 1.0 / y);
  return std::abs(x - y) / (std::hypot(1.0, a) * std::hypot(1.0, b));
}

double distance_to_infinity(const Complex& x) {
  return 1.0 / std::hypot(1.0, std::abs(x));
}

// The pencil turned by an angle: its values are (c λ + s) / (c - s λ), all finite unless the angle
// happens to meet one; with noise, in another order, and transposed.
struct Turned {
  Parts M, N;
  double c, s;

  Turned(const Matrix& A, const Matrix& B, Random& random) {
    const double t = 0.6 + 0.3 * random.unit();
    c = 1.0 / std::hypot(1.0, t);
    s = c * t;
    M.re = A;
    N.re = B;
    for (std::size_t k = 0; k < A.elements.size(); ++k) {
      M.re.elements[k] = c * A.elements[k] + s * B.elements[k];
      N.re.elements[k] = c * B.elements[k] - s * A.elements[k];
    }
    const auto rows = random_order(random, A.rows), cols = random_order(random, A.rows);
    for (Matrix* part : {&M.re, &N.re}) {
      add_noise(*part, 2.0 * kEpsilon * frobenius(*part), false, random);
      *part = transposed(permuted(*part, rows, cols));
    }
  }
  Complex back(const Complex& mu) const { return (c * mu - s) / (c + s * mu); }
};

}  // namespace

// A second call with the pencil turned, so that infinite values come out too.
Verdict check_genvals(const Request& r) {
  constexpr double kSafety = 2.0, kInfinite = 1e-5;
  Matrix M = parts_of(matrix_at(r, 0)).re, N = parts_of(matrix_at(r, 1)).re;
  if (!is_cheap(r, M.rows)) return {};
  if (M.rows == 1) return {.error = 0.0};
  const int power = normalize(M) - normalize(N);
  Numbers values = numbers_of(r.result);
  for (Complex& z : values) z = {std::ldexp(z.real(), power), std::ldexp(z.imag(), power)};
  Random random = random_for(matrix_at(r, 0), 9);
  const Turned turned(M, N, random);
  const Parts* const matrices[] = {&turned.M, &turned.N};
  const double tolerance = 1e-15;
  Numbers second = numbers_of(call_again(r, matrices, &tolerance));
  if (second.empty()) return alarm("a second run did not converge: values in a tight cluster");
  for (Complex& z : second) z = turned.back(z);
  if (second.size() < values.size())
    return alarm(
        fmt::format("a second run finds {} of these {} values", second.size(), values.size()));
  const auto partner = nearest_pairs(values, second, chordal);
  std::vector<bool> found(second.size());
  double error = 0.0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto j = static_cast<std::size_t>(partner[i]);
    found[j] = true;
    error = std::max(error, kSafety * chordal(values[i], second[j]));
  }
  int missing = 0;
  for (std::size_t j = 0; j < second.size(); ++j)
    if (!found[j] && distance_to_infinity(second[j]) > kInfinite) ++missing;
  if (missing > 0)
    return alarm(
        fmt::format("{} finite {} missing", missing, missing == 1 ? "value is" : "values are"));
  return {.error = error, .cause = "a second run, scaled, gives others"};
}

}  // namespace audit
