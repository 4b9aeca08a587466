// Checks of factorizations: lu, cholesky, qr.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "fmt/format.h"
#include "host/audit/check.hpp"
#include "host/audit/numeric/double_double.hpp"

namespace audit {

namespace {

constexpr int kProbes = 2;

std::span<aMatrix* const> factors_of(const Request& r, std::size_t count) {
  const auto parts = r.store.parts(r.result);
  return parts.size() == count ? parts : std::span<aMatrix* const>();
}

bool has_shape(const aMatrix* m, int rows, int cols) {
  return m->rows == rows && m->cols == cols;
}

double difference(const Vector& x, const Vector& y) {
  double most = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double d = std::fabs(x[i] - y[i]);
    if (!(d <= most)) most = d;
  }
  return most;
}

// For each column of the permutation matrix the row in which its 1 stands; empty if it is none.
std::vector<std::size_t> permutation_of(const aMatrix* P) {
  std::vector<std::size_t> rows;
  for (int j = 0; j < P->cols; ++j) {
    const double* const column = P->re + static_cast<std::ptrdiff_t>(j) * P->leading_dimension;
    const double* const one = std::find(column, column + P->rows, 1.0);
    if (one == column + P->rows) return {};
    rows.push_back(static_cast<std::size_t>(one - column));
  }
  return rows;
}

// The largest exponent in a column whose rows are scaled.
int largest_exponent(const aMatrix* m, int col, const Exponents& rows) {
  int most = kZeroExponent;
  for (const double* part : {m->re, m->im}) {
    if (part == nullptr) continue;
    const double* const a = part + static_cast<std::ptrdiff_t>(col) * m->leading_dimension;
    for (std::size_t i = 0; i < rows.size(); ++i)
      most = std::max(most, a[i] == 0.0 ? kZeroExponent : exponent(a[i]) + rows[i]);
  }
  return most;
}

}  // namespace

// P (M v) - L (U v) for a random v, with the columns and then the rows of M brought to one size
// (Higham, Accuracy and Stability, theorem 9.3).
Verdict check_lu(const Request& r) {
  const auto parts = factors_of(r, 3);
  const int n = matrix_at(r, 0)->rows;
  for (const aMatrix* part : parts)
    if (!has_shape(part, n, n)) return {};
  if (parts.empty()) return {};
  const aMatrix *const M = matrix_at(r, 0), *const L = parts[1], *const U = parts[2];
  // Row k of M is row rows[k] of L U.
  const std::vector<std::size_t> rows = permutation_of(parts[0]);
  if (rows.empty()) return alarm("P is no permutation");
  const Equilibration by = equilibration(M);
  // (D_r L D) (D⁻¹ U D_c): D keeps the two factors within range.
  Exponents of_L(rows.size()), within(rows.size()), back(rows.size());
  for (std::size_t k = 0; k < rows.size(); ++k) of_L[rows[k]] = by.rows[k];
  for (std::size_t k = 0; k < rows.size(); ++k) {
    const int most = largest_exponent(L, static_cast<int>(k), of_L);
    back[k] = most == kZeroExponent ? 0 : most;
    within[k] = -back[k];
  }
  Random random = random_for(M, 3);
  double error = 0.0;
  for (int probe = 0; probe < kProbes; ++probe) {
    const Vector v = random_signs(random, M->im == nullptr ? rows.size() : 2 * rows.size());
    const Vector product = scaled_product(M, by.rows, by.cols, v);
    const Vector of_factors = scaled_product(L, of_L, within, scaled_product(U, back, by.cols, v));
    Vector w(v.size());
    for (std::size_t k = 0; k < w.size(); ++k)
      w[k] = of_factors[k < rows.size() ? rows[k] : rows.size() + rows[k - rows.size()]];
    error = std::max(error, difference(product, w));
  }
  return {.error = error, .cause = "L U is not P M"};
}

namespace {

// L⁻ᵀ x and L⁻¹ x.
Vector solve_lower_transposed(const Matrix& L, Vector x) {
  for (int k = L.rows; k-- > 0;) {
    const auto n = static_cast<std::size_t>(L.rows - k - 1);
    const auto at = static_cast<std::size_t>(k);
    x[at] = (x[at] - dot(L.column(k) + k + 1, x.data() + at + 1, n)) / L(k, k);
  }
  return x;
}

Vector solve_lower(const Matrix& L, Vector x) {
  for (int k = 0; k < L.rows; ++k) {
    const double d = x[static_cast<std::size_t>(k)] /= L(k, k);
    for (int i = k + 1; i < L.rows; ++i) x[static_cast<std::size_t>(i)] -= L(i, k) * d;
  }
  return x;
}

// (A - L Lᵀ) y, the difference in twice the digits.
Vector residual_times(const Matrix& A, const Matrix& L, const Vector& y) {
  Vector2 w(y.size()), z(y.size());
  add_product(A, Vector2(y), 1.0, w);
  add_transposed_product(L, Vector2(y), 1.0, z);
  add_product(L, z, -1.0, w);
  for (std::size_t i = 0; i < y.size(); ++i) w.hi[i] += w.lo[i];
  return w.hi;
}

// Column k of the first-order error L Φ(C) of L, from column k of C = L⁻¹ (A - L Lᵀ) L⁻ᵀ: Φ keeps
// what is below the diagonal, and half of that (G. W. Stewart, On the perturbation of LU, Cholesky,
// and QR factorizations, 1993).
Vector factor_error(const Matrix& L, Vector c, int k) {
  const auto at = static_cast<std::size_t>(k);
  std::fill_n(c.begin(), at, 0.0);
  c[at] *= 0.5;
  Vector e(c.size());
  for (int j = k; j < L.cols; ++j)
    for (int i = j; i < L.rows; ++i)
      e[static_cast<std::size_t>(i)] += L(i, j) * c[static_cast<std::size_t>(j)];
  return e;
}

}  // namespace

// (A - L Lᵀ) L⁻ᵀ u, of the size of the first-order error of L, after the diagonal was scaled to
// about 1 (Higham, Accuracy and Stability, section 10.1: J. Demmel's condition is that of the
// scaled matrix).
Verdict check_cholesky(const Request& r) {
  constexpr double kSafety = 2.0;
  Matrix A = parts_of(matrix_at(r, 0)).re, L = parts_of(result_matrix(r)).re;
  const int n = A.rows;
  if (!is_cheap(r, n)) return {};
  Exponents by;
  for (int i = 0; i < n; ++i) {
    if (!(A(i, i) > 0.0) || !(L(i, i) > 0.0)) return {.error = 1.0};
    by.push_back(-exponent(A(i, i)) / 2);
    // The upper triangle is the one that counts.
    for (int j = 0; j < i; ++j) A(i, j) = A(j, i);
  }
  scale(A, by, by);
  scale(L, by, {});
  Random random = random_for(matrix_at(r, 0), 4);
  double error = 0.0, inverse = 0.0, contraction = 0.0;
  const bool by_columns = n <= kFewColumns;
  for (int probe = 0; probe < (by_columns ? n : kProbes + 1); ++probe) {
    Vector u(static_cast<std::size_t>(n));
    if (by_columns)
      u[static_cast<std::size_t>(probe)] = 1.0;
    else
      u = random_signs(random, u.size());
    const Vector y = solve_lower_transposed(L, u);
    // A step of the power method tells the size of A⁻¹ = L⁻ᵀ L⁻¹.
    const Vector z = solve_lower_transposed(L, solve_lower(L, y));
    inverse = std::max(inverse, euclidean(z) / euclidean(y));
    const Vector e = residual_times(A, L, y), c = solve_lower(L, e);
    error = std::max(error, by_columns ? largest(factor_error(L, c, probe)) : kSafety * largest(e));
    // L⁻¹ (A - L Lᵀ) L⁻ᵀ: below 1 the matrix is definite, and the error of first order holds.
    contraction = std::max(contraction, largest(c));
  }
  const double condition = inverse * frobenius(A);
  if (!(contraction < 0.5))
    return {.error = 1.0, .cause = "the matrix is singular to working precision"};
  return {.error = error, .cause = fmt::format("the condition number is {:.0e}", condition)};
}

// A v - Q (R v) with the columns of A brought to length 1, Qᵀ (Q u) - u, and R below its staircase
// (Higham, Accuracy and Stability, theorem 19.4).
Verdict check_qr(const Request& r) {
  const auto parts = factors_of(r, 2);
  const int m = matrix_at(r, 0)->rows, n = matrix_at(r, 0)->cols;
  if (parts.empty() || !has_shape(parts[0], m, m) || !has_shape(parts[1], m, n)) return {};
  Matrix A = parts_of(matrix_at(r, 0)).re, R = parts_of(parts[1]).re;
  const Matrix Q = parts_of(parts[0]).re;
  const Exponents by = column_exponents(A);
  scale(A, {}, by);
  scale(R, {}, by);
  double below = 0.0;
  for (int j = 0; j < R.cols; ++j)
    for (int i = j + 1; i < R.rows; ++i) below = std::max(below, std::fabs(R(i, j)));
  if (below > 1e-6) return alarm("R is not triangular");
  Random random = random_for(matrix_at(r, 0), 5);
  double error = below;
  for (int probe = 0; probe < kProbes; ++probe) {
    const Vector v = random_signs(random, static_cast<std::size_t>(A.cols));
    const Vector u = random_signs(random, static_cast<std::size_t>(A.rows));
    error = std::max({error, difference(product(A, v), product(Q, product(R, v))),
                      difference(transposed_product(Q, product(Q, u)), u)});
  }
  return {.error = error, .cause = "Q R is not the matrix"};
}

}  // namespace audit
