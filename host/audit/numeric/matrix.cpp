#include "host/audit/numeric/matrix.hpp"

#include <algorithm>
#include <cmath>

namespace audit {

namespace {

Matrix part_of(const aMatrix* m, const double* part) {
  if (part == nullptr) return Matrix(m->rows, m->cols);
  Matrix A;
  A.rows = m->rows;
  A.cols = m->cols;
  A.elements.reserve(static_cast<std::size_t>(m->rows) * static_cast<std::size_t>(m->cols));
  for (int j = 0; j < m->cols; ++j) {
    const double* const column = part + static_cast<std::ptrdiff_t>(j) * m->leading_dimension;
    A.elements.insert(A.elements.end(), column, column + m->rows);
  }
  return A;
}

// Independent sums and maxima, as many as hide how long one addition takes.
constexpr std::size_t kLanes = 8;

// y := y + A x
void add_product(const Matrix& A, const double* x, double* y) {
  const auto m = static_cast<std::size_t>(A.rows);
  int j = 0;
  // Four columns at a time: y is read and written a quarter as often.
  for (; j + 4 <= A.cols; j += 4, x += 4) {
    const double *const a = A.column(j), *const b = a + m, *const c = b + m, *const d = c + m;
    const double xa = x[0], xb = x[1], xc = x[2], xd = x[3];
    for (std::size_t i = 0; i < m; ++i) y[i] += (a[i] * xa + b[i] * xb) + (c[i] * xc + d[i] * xd);
  }
  for (; j < A.cols; ++j, ++x)
    for (std::size_t i = 0; i < m; ++i) y[i] += A.column(j)[i] * *x;
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
  double most[kLanes] = {};
  const auto take = [&](std::size_t lane, double a) {
    most[lane] = most[lane] > std::fabs(a) ? most[lane] : std::fabs(a);
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
  add_product(A, x.data(), y.data());
  return y;
}

Vector transposed_product(const Matrix& A, const Vector& x) {
  Vector y(static_cast<std::size_t>(A.cols));
  for (int j = 0; j < A.cols; ++j)
    y[static_cast<std::size_t>(j)] = dot(A.column(j), x.data(), x.size());
  return y;
}

Matrix transposed(const Matrix& A) {
  Matrix T(A.cols, A.rows);
  for (int j = 0; j < A.cols; ++j)
    for (int i = 0; i < A.rows; ++i) T(j, i) = A(i, j);
  return T;
}

double dot(const double* x, const double* y, std::size_t n) {
  double sums[kLanes] = {};
  std::size_t k = 0;
  for (; k + kLanes <= n; k += kLanes)
    for (std::size_t lane = 0; lane < kLanes; ++lane) sums[lane] += x[k + lane] * y[k + lane];
  for (; k < n; ++k) sums[0] += x[k] * y[k];
  for (std::size_t lane = 1; lane < kLanes; ++lane) sums[0] += sums[lane];
  return sums[0];
}

bool all_finite(const double* x, std::size_t n) {
  // 0 times a number is 0, times anything else it is NaN.
  double sums[kLanes] = {};
  std::size_t k = 0;
  for (; k + kLanes <= n; k += kLanes)
    for (std::size_t lane = 0; lane < kLanes; ++lane) sums[lane] += 0.0 * x[k + lane];
  for (; k < n; ++k) sums[0] += 0.0 * x[k];
  for (std::size_t lane = 1; lane < kLanes; ++lane) sums[0] += sums[lane];
  return sums[0] == 0.0;
}

int index_of_largest(const double* x, int first, int n) {
  const auto by_size = [](double a, double b) { return std::fabs(a) < std::fabs(b); };
  return static_cast<int>(std::max_element(x + first, x + n, by_size) - x);
}

Vector random_signs(Random& random, std::size_t n) {
  Vector v(n);
  for (double& x : v) x = random.one_in(2) ? 1.0 : -1.0;
  return v;
}

}  // namespace audit
