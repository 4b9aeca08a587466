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
  // The value that belongs to one of the turned pencil; of infinity some large number, since a NaN
  // could not be put in order.
  Complex back(const Complex& mu) const {
    constexpr double kLarge = 1e100;
    const Complex below = c + s * mu;
    return std::abs(below) * kLarge < 1.0 ? kLarge : (c * mu - s) / below;
  }
};

// The values of a pencil from a call with it turned; none where that fails.
Numbers turned_values(const Request& r, const Matrix& M, const Matrix& N, Random random) {
  const Turned turned(M, N, random);
  const Parts* const matrices[] = {&turned.M, &turned.N};
  const double tolerance = 1e-15;
  Numbers values = numbers_of(call_again(r, matrices, &tolerance));
  for (Complex& z : values) z = turned.back(z);
  return values;
}

// How many of the second values that have no partner are finite beyond doubt: a third run has them
// in the same place.
int missing_values(const Numbers& second, const std::vector<bool>& found, const Numbers& third) {
  constexpr double kInfinite = 1e-5, kSame = 0.25;
  int missing = 0;
  for (std::size_t j = 0; j < second.size(); ++j) {
    const double apart = distance_to_infinity(second[j]);
    const bool is_sure = std::any_of(third.begin(), third.end(), [&](const Complex& z) {
      return chordal(z, second[j]) < kSame * apart;
    });
    if (!found[j] && apart > kInfinite && is_sure) ++missing;
  }
  return missing;
}

// Brings the largest element to 1.
void divide_by_largest(Matrix& A) {
  const double most = largest(A);
  if (most > 0.0)
    for (double& x : A.elements) x /= most;
}

}  // namespace

// Two more calls with the pencil turned, so that infinite values come out too.
Verdict check_genvals(const Request& r) {
  constexpr double kSafety = 2.0;
  Matrix M = parts_of(matrix_at(r, 0)).re, N = parts_of(matrix_at(r, 1)).re;
  if (!is_cheap(r, M.rows)) return {};
  const int power = normalize(M) - normalize(N);
  const double unit = largest(M) == 0.0 ? 1.0 : largest(N) / largest(M);
  Numbers values = numbers_of(r.result);
  for (Complex& z : values)
    z = {std::ldexp(z.real(), power) * unit, std::ldexp(z.imag(), power) * unit};
  divide_by_largest(M);
  divide_by_largest(N);
  const Numbers second = turned_values(r, M, N, random_for(matrix_at(r, 0), 9));
  const Numbers third = turned_values(r, M, N, random_for(matrix_at(r, 0), 14));
  if (second.empty() || third.empty())
    return alarm("a second run did not converge: values in a tight cluster");
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
  const int missing = missing_values(second, found, third);
  if (missing > 0)
    return alarm(
        fmt::format("{} finite {} missing", missing, missing == 1 ? "value is" : "values are"));
  return {.error = error, .cause = "a second run, scaled, gives others"};
}

}  // namespace audit
