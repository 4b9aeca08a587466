// The check of eigenvals.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "fmt/format.h"
#include "host/audit/second_call.hpp"

namespace audit {

namespace {

bool is_symmetric(const Parts& A) {
  if (A.is_complex()) return false;
  for (int j = 0; j < A.re.cols; ++j)
    for (int i = 0; i < j; ++i)
      if (A.re(i, j) != A.re(j, i)) return false;
  return true;
}

double distance(const Complex& x, const Complex& y) {
  return std::abs(x - y);
}

double largest_modulus(const Numbers& x) {
  double most = 0.0;
  for (const Complex& z : x) most = std::max(most, std::abs(z));
  return most;
}

Numbers scaled(Numbers x, int power) {
  for (Complex& z : x) z = {std::ldexp(z.real(), power), std::ldexp(z.imag(), power)};
  return x;
}

// The trace against the sum of the eigenvalues, which any order of n can afford.
bool has_the_trace(const Parts& A, const Numbers& values) {
  Complex sum = 0.0;
  double size = 0.0;
  for (int k = 0; k < A.re.rows; ++k) sum += Complex(A.re(k, k), A.is_complex() ? A.im(k, k) : 0.0);
  for (const Complex& z : values) {
    sum -= z;
    size += std::abs(z);
  }
  return std::abs(sum) <= 1e-6 * std::max(size, frobenius(A.re));
}

// Whether row, or column, k has nothing but zeros beside the diagonal, among the indices that are
// left.
bool is_alone(const Parts& A, const std::vector<int>& left, int k, bool row) {
  return std::all_of(left.begin(), left.end(), [&](int i) {
    const int a = row ? k : i, b = row ? i : k;
    return i == k || (A.re(a, b) == 0.0 && (!A.is_complex() || A.im(a, b) == 0.0));
  });
}

// Takes off the rows and columns that lead to an eigenvalue at once: it is an element of the
// diagonal, and rounding does not touch it. What is left stays in A.
Numbers take_isolated(Parts& A) {
  Numbers values;
  std::vector<int> left(static_cast<std::size_t>(A.re.rows));
  std::iota(left.begin(), left.end(), 0);
  for (bool found = true; found && !left.empty();) {
    found = false;
    for (std::size_t k = 0; k < left.size(); ++k) {
      const int at = left[k];
      if (!is_alone(A, left, at, true) && !is_alone(A, left, at, false)) continue;
      values.emplace_back(A.re(at, at), A.is_complex() ? A.im(at, at) : 0.0);
      left.erase(left.begin() + static_cast<std::ptrdiff_t>(k--));
      found = true;
    }
  }
  const auto n = static_cast<int>(left.size());
  for (Matrix* part : {&A.re, &A.im}) {
    if (part->elements.empty()) continue;
    Matrix rest(n, n);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i)
        rest(i, j) = (*part)(left[static_cast<std::size_t>(i)], left[static_cast<std::size_t>(j)]);
    *part = rest;
  }
  return values;
}

// The matrix balanced, with noise of its norm's rounding, rows and columns in another order, and
// transposed: its eigenvalues differ as much as those that a stable method may give.
Parts disturbed(Parts A, Random& random) {
  constexpr double kNoise = kEpsilon;
  const bool symmetric = is_symmetric(A);
  if (!symmetric) balance(A);
  const auto order = random_order(random, A.re.rows);
  const double size = std::hypot(frobenius(A.re), frobenius(A.im));
  for (Matrix* part : {&A.re, &A.im}) {
    if (part->elements.empty()) continue;
    add_noise(*part, kNoise * size, symmetric, random);
    *part = transposed(permuted(*part, order, order));
  }
  return A;
}

}  // namespace

// A second call with a disturbed matrix: a stochastic estimate of the condition (C. S. Kenney, A.
// J. Laub, Small-sample statistical condition estimates, 1994).
Verdict check_eigenvals(const Request& r) {
  constexpr double kSafety = 2.0;
  const aMatrix* const m = matrix_at(r, 0);
  Parts A = parts_of(m);
  const int power = normalize(A);
  const Numbers values = scaled(numbers_of(r.result), power);
  if (largest(A.re) == 0.0 && largest(A.im) == 0.0)
    return {.error = largest_modulus(values) == 0.0 ? 0.0 : 1.0};
  if (!is_cheap(r, A.re.rows)) {
    if (has_the_trace(A, values)) return {};
    return alarm("their sum is not the trace");
  }
  // Parts below TOL are dropped from a complex result; the second call drops none.
  const double nothing = 0.0;
  double apart = 0.0, size = 0.0;
  const Numbers isolated = take_isolated(A);
  for (int call = 0; call < 2; ++call) {
    Random random = random_for(m, 8 + static_cast<std::uint64_t>(call));
    Numbers second = isolated;
    if (A.re.rows > 0) {
      const Parts other = disturbed(A, random);
      const Parts* const matrices[] = {&other};
      const Numbers found = numbers_of(call_again(r, matrices, &nothing));
      second.insert(second.end(), found.begin(), found.end());
    }
    if (second.size() != values.size())
      return {.error = 1e-4,
              .alarm = "a second run did not converge: eigenvalues in a tight cluster"};
    const auto partner = nearest_pairs(values, second, distance);
    for (std::size_t i = 0; i < values.size(); ++i)
      apart = std::max(apart, distance(values[i], second[static_cast<std::size_t>(partner[i])]));
    size = std::max(size, largest_modulus(second));
  }
  if (size == 0.0) return {.error = apart == 0.0 ? 0.0 : 1.0};
  const double error = kSafety * apart;
  Verdict verdict = {.error = error / size,
                     .cause = "a second run, with rounding put in, gives others"};
  const double least = std::ldexp(error * 1e6, -power);
  for (const Complex& z : values)
    if (z != 0.0 && std::abs(z) < error * 1e6)
      verdict.note = fmt::format("values below {:.0e} have no six digits", least);
  return verdict;
}

}  // namespace audit
