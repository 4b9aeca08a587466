#include "host/audit/numeric/matrix.hpp"

#include <algorithm>
#include <cmath>

namespace audit {

namespace {

Matrix part_of(const aMatrix* m, const double* part) {
  Matrix A(m->rows, m->cols);
  if (part == nullptr) return A;
  for (int j = 0; j < m->cols; ++j)
    std::copy_n(part + static_cast<std::ptrdiff_t>(j) * m->leading_dimension, m->rows, A.column(j));
  return A;
}

}  // namespace

Parts parts_of(const aMatrix* m) {
  return {part_of(m, m->re), m->im == nullptr ? Matrix() : part_of(m, m->im)};
}

Matrix real_form(const Parts& m, bool as_complex) {
  if (!as_complex) return m.re;
  const int rows = m.re.rows, cols = m.re.cols;
  Matrix A(2 * rows, 2 * cols);
  for (int j = 0; j < cols; ++j)
    for (int i = 0; i < rows; ++i) {
      A(i, j) = A(rows + i, cols + j) = m.re(i, j);
      if (!m.is_complex()) continue;
      A(rows + i, j) = m.im(i, j);
      A(i, cols + j) = -m.im(i, j);
    }
  return A;
}

Matrix real_form(Parts&& m, bool as_complex) {
  return as_complex ? real_form(static_cast<const Parts&>(m), true) : std::move(m.re);
}

Vector column_form(const Parts& m, int col, bool as_complex) {
  const double* const re = m.re.column(col);
  Vector x(re, re + m.re.rows);
  if (!as_complex) return x;
  if (m.is_complex())
    x.insert(x.end(), m.im.column(col), m.im.column(col) + m.re.rows);
  else
    x.resize(2 * x.size());
  return x;
}

double largest(const Vector& x) {
  constexpr std::size_t kLanes = 4;
  double most[kLanes] = {};
  const auto take = [&](std::size_t lane, double a) {
    most[lane] = std::fabs(a) <= most[lane] ? most[lane] : std::fabs(a);
  };
  std::size_t k = 0;
  for (; k + kLanes <= x.size(); k += kLanes)
    for (std::size_t lane = 0; lane < kLanes; ++lane) take(lane, x[k + lane]);
  for (; k < x.size(); ++k) take(0, x[k]);
  for (std::size_t lane = 1; lane < kLanes; ++lane) take(0, most[lane]);
  return most[0];
}

double euclidean(const Vector& x) {
  return std::sqrt(dot(x.data(), x.data(), x.size()));
}

double frobenius(const Matrix& A) {
  return euclidean(A.elements);
}

double norm_1(const Matrix& A) {
  double most = 0.0;
  for (int j = 0; j < A.cols; ++j) {
    double sum = 0.0;
    for (int i = 0; i < A.rows; ++i) sum += std::fabs(A(i, j));
    most = std::max(most, sum);
  }
  return most;
}

double norm_inf(const Matrix& A) {
  Vector sums(static_cast<std::size_t>(A.rows));
  for (int j = 0; j < A.cols; ++j)
    for (int i = 0; i < A.rows; ++i) sums[static_cast<std::size_t>(i)] += std::fabs(A(i, j));
  return largest(sums);
}

Vector product(const Matrix& A, const Vector& x) {
  Vector y(static_cast<std::size_t>(A.rows));
  for (int j = 0; j < A.cols; ++j) {
    const double* const a = A.column(j);
    const double xj = x[static_cast<std::size_t>(j)];
    if (xj == 0.0) continue;
    for (std::size_t i = 0; i < y.size(); ++i) y[i] += a[i] * xj;
  }
  return y;
}

Vector transposed_product(const Matrix& A, const Vector& x) {
  Vector y(static_cast<std::size_t>(A.cols));
  for (int j = 0; j < A.cols; ++j)
    y[static_cast<std::size_t>(j)] = dot(A.column(j), x.data(), x.size());
  return y;
}

Matrix product(const Matrix& A, const Matrix& B) {
  Matrix C(A.rows, B.cols);
  const auto m = static_cast<std::size_t>(A.rows);
  for (int j = 0; j < B.cols; ++j)
    for (int k = 0; k < A.cols; ++k) {
      const double b = B(k, j);
      if (b == 0.0) continue;
      double* const c = C.column(j);
      const double* const a = A.column(k);
      for (std::size_t i = 0; i < m; ++i) c[i] += a[i] * b;
    }
  return C;
}

Matrix transposed(const Matrix& A) {
  Matrix T(A.cols, A.rows);
  for (int j = 0; j < A.cols; ++j)
    for (int i = 0; i < A.rows; ++i) T(j, i) = A(i, j);
  return T;
}

double dot(const double* x, const double* y, std::size_t n) {
  double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
  std::size_t k = 0;
  for (; k + 4 <= n; k += 4) {
    s0 += x[k] * y[k];
    s1 += x[k + 1] * y[k + 1];
    s2 += x[k + 2] * y[k + 2];
    s3 += x[k + 3] * y[k + 3];
  }
  for (; k < n; ++k) s0 += x[k] * y[k];
  return (s0 + s1) + (s2 + s3);
}

bool all_finite(const double* x, std::size_t n) {
  constexpr std::size_t kLanes = 4;
  // 0 times a number is 0, times anything else it is NaN.
  double sums[kLanes] = {};
  std::size_t k = 0;
  for (; k + kLanes <= n; k += kLanes)
    for (std::size_t lane = 0; lane < kLanes; ++lane) sums[lane] += 0.0 * x[k + lane];
  for (; k < n; ++k) sums[0] += 0.0 * x[k];
  return (sums[0] + sums[1]) + (sums[2] + sums[3]) == 0.0;
}

Vector random_signs(Random& random, std::size_t n) {
  Vector v(n);
  for (double& x : v) x = random.one_in(2) ? 1.0 : -1.0;
  return v;
}

}  // namespace audit
