// Checks of lsolve and of the inverse.
#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/audit/check.hpp"
#include "host/audit/numeric/solver.hpp"

namespace audit {

namespace {

std::string condition_text(double condition) {
  return fmt::format("the condition number is {:.0e}", condition);
}

void scale(Vector& x, const Exponents& e, int shift) {
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = std::ldexp(x[i], e[i] - shift);
}

// The digits of the small elements of a result whose error is known, element by element.
std::string small_elements_note(const Vector& x, const Vector& error) {
  const double largest_error = largest(error);
  constexpr double kSixDigits = 1e-6;
  for (std::size_t i = 0; i < x.size(); ++i)
    if (x[i] != 0.0 && std::fabs(error[i]) > kSixDigits * std::fabs(x[i]) &&
        std::fabs(error[i]) <= largest_error)
      return "elements much smaller than the largest do not have six digits";
  return {};
}

}  // namespace

// Iterative refinement on a factorization of our own, with residuals of twice the digits: the sum
// of the corrections is the error (Higham, Accuracy and Stability, chapter 12).
Verdict check_lsolve(const Request& r) {
  const Parts M = parts_of(matrix_at(r, 0)), v = parts_of(matrix_at(r, 1)),
              given = parts_of(result_matrix(r));
  if (!is_cheap(r, M.re.rows)) return {};
  const bool complex = M.is_complex() || v.is_complex();
  Vector b = column_form(v, 0, complex), x = column_form(given, 0, complex);
  if (largest(b) == 0.0) return {.error = largest(x) == 0.0 ? 0.0 : 1.0};
  const Solver solver(real_form(M, complex), r.stop);
  if (solver.is_hopeless()) return {.error = 1.0, .cause = kSingular};
  // A_s (D_c⁻¹ x) = D_r b, both times 2^-shift, which brings the larger one to 1.
  const Exponents cols = solver.scaling().cols;
  Exponents down = cols;
  for (int& e : down) e = -e;
  const int shift = std::max(exponent(x, down), exponent(b, solver.scaling().rows));
  scale(x, down, shift);
  scale(b, solver.scaling().rows, shift);
  Vector2 refined(x);
  if (!solver.refine(Vector2(b), refined)) return {.error = 1.0, .cause = kSingular};
  Vector error(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) error[i] = (refined.hi[i] - x[i]) + refined.lo[i];
  const int unit = exponent(refined.hi, cols);
  Verdict verdict = {.error = largest(error, cols, unit) / largest(refined.hi, cols, unit),
                     .cause = condition_text(solver.condition()),
                     .note = small_elements_note(refined.hi, error)};
  // The result may hold all the same for the matrix as it is stored.
  if (solver.condition() * kEpsilon >= 1.0)
    verdict.note = condition_text(solver.condition()) +
                   ": another rounding of the matrix has another solution";
  return verdict;
}

namespace {

// The rows of X = A⁻¹ in units in which A is A_s = D_r A D_c: X_s = D_c⁻¹ X D_r⁻¹, times the power
// of two that brings its largest element to 1.
Matrix scaled_inverse(Matrix X, const Equilibration& by, int* shift) {
  Exponents rows, cols;
  for (const int e : by.cols) rows.push_back(-e);
  for (const int e : by.rows) cols.push_back(-e);
  const int most = largest_exponent(X, rows, cols);
  *shift = most == kZeroExponent ? 0 : -most;
  for (int& e : rows) e += *shift;
  scale(X, rows, cols);
  return X;
}

// X (v - A (X v)), the first-order error of X times v; X is 2^shift times what it should be. Raises
// *contraction to the size of v - A (X v) against that of v.
Vector error_times(const Matrix& A, const Matrix& X, int shift, const Vector& v,
                   double* contraction) {
  Vector2 y(v.size()), w(v.size());
  // Its rounding is not multiplied by the condition: it costs the last digit, which counts in small
  // matrices only.
  if (A.rows <= kCheapOrder)
    add_product(X, Vector2(v), 1.0, y);
  else
    y.hi = product(X, v);
  add_product(A, y, -1.0, w);
  for (std::size_t i = 0; i < v.size(); ++i) w.add(i, {std::ldexp(v[i], shift), 0.0});
  for (std::size_t i = 0; i < v.size(); ++i) w.hi[i] = std::ldexp(w.hi[i] + w.lo[i], -shift);
  *contraction = std::max(*contraction, largest(w.hi) / largest(v));
  return product(X, w.hi);
}

// A and X in the units of D_r and D_c, as `scaled_inverse` has them.
struct InversePair {
  const Matrix& A;
  const Matrix& X;
  const Equilibration& by;
  int shift;
};

// The first-order error of all elements of X against the largest, column by column.
double error_of_columns(const InversePair& p, double* contraction) {
  const auto n = static_cast<std::size_t>(p.A.rows);
  // X = D_c X_s D_r: its elements, and those of the error, in units of the largest.
  int unit = kZeroExponent;
  double size = 0.0, error = 0.0;
  const auto column = [&](std::size_t j) {
    const double* const x = p.X.column(static_cast<int>(j));
    return Vector(x, x + n);
  };
  for (std::size_t j = 0; j < n; ++j)
    unit = std::max(unit, exponent(column(j), p.by.cols) + p.by.rows[j]);
  for (std::size_t j = 0; j < n; ++j) {
    Vector v(n);
    v[j] = 1.0;
    const Vector e = error_times(p.A, p.X, p.shift, v, contraction);
    error = std::max(error, largest(e, p.by.cols, unit - p.by.rows[j]));
    size = std::max(size, largest(column(j), p.by.cols, unit - p.by.rows[j]));
  }
  return error / size;
}

// The first-order error of X v against X v, for random signs v.
double error_of_probes(const InversePair& p, Random& random, double* contraction) {
  // Errors of opposite signs hide each other.
  constexpr double kSafety = 2.0;
  const auto& [rows, cols] = p.by;
  const auto [least, most] = std::minmax_element(rows.begin(), rows.end());
  // Where the rows have about one size, signs in the one unit are as good as in the other.
  const bool is_even = *most - *least <= 2;
  double error = 0.0;
  for (int probe = 0; probe < probes_for(p.A.rows); ++probe) {
    Vector v = random_signs(random, rows.size());
    if (!is_even) error_times(p.A, p.X, p.shift, v, contraction);
    // Signs in the matrix's own units: X = D_c X_s D_r.
    scale(v, rows, *most);
    const Vector e = error_times(p.A, p.X, p.shift, v, contraction), y = product(p.X, v);
    const int unit = exponent(y, cols);
    error = std::max(error, largest(e, cols, unit) / largest(y, cols, unit));
  }
  return kSafety * error;
}

}  // namespace

Verdict check_inverse(const Request& r) {
  const bool complex = matrix_at(r, 0)->im != nullptr;
  Matrix A = real_form(parts_of(matrix_at(r, 0)), complex);
  const Equilibration by = equilibrate(A);
  int shift = 0;
  const Matrix X = scaled_inverse(real_form(parts_of(result_matrix(r)), complex), by, &shift);
  const double condition = std::ldexp(norm_1(A) * norm_1(X), -shift);
  if (!(condition * kEpsilon < 1.0)) return {.error = 1.0, .cause = kSingular};
  Random random = random_for(matrix_at(r, 0), 2);
  const InversePair pair = {A, X, by, shift};
  double contraction = 0.0;
  const double error = A.rows <= kFewColumns ? error_of_columns(pair, &contraction)
                                             : error_of_probes(pair, random, &contraction);
  if (!(contraction < 0.5)) return {.error = 1.0, .cause = kSingular};
  return {.error = error, .cause = condition_text(condition)};
}

}  // namespace audit
