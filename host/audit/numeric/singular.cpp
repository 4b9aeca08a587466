#include "host/audit/numeric/singular.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace audit {

namespace {

// Turns columns x and y by the angle of cosine c and sine s.
void rotate(double* x, double* y, int n, double c, double s) {
  for (int i = 0; i < n; ++i) {
    const double a = x[i], b = y[i];
    x[i] = c * a - s * b;
    y[i] = s * a + c * b;
  }
}

// Makes columns p and q of W orthogonal; false if they are.
bool orthogonalize(Matrix& W, Matrix& V, int p, int q) {
  const auto m = static_cast<std::size_t>(W.rows);
  const double alpha = dot(W.column(p), W.column(p), m), beta = dot(W.column(q), W.column(q), m);
  const double gamma = dot(W.column(p), W.column(q), m);
  if (!(std::fabs(gamma) > kEpsilon * std::sqrt(alpha * beta))) return false;
  const double zeta = (beta - alpha) / (2.0 * gamma);
  const double t = std::copysign(1.0, zeta) / (std::fabs(zeta) + std::hypot(1.0, zeta));
  const double c = 1.0 / std::sqrt(1.0 + t * t), s = c * t;
  rotate(W.column(p), W.column(q), W.rows, c, s);
  rotate(V.column(p), V.column(q), V.rows, c, s);
  return true;
}

}  // namespace

SingularForm singular_form(const Matrix& A, efi::StopFlag stop) {
  constexpr int kMostSweeps = 40;
  const int n = A.cols;
  Matrix W = A, V(n, n);
  for (int j = 0; j < n; ++j) V(j, j) = 1.0;
  bool turned = true;
  for (int sweep = 0; turned && sweep < kMostSweeps; ++sweep) {
    turned = false;
    for (int p = 0; p < n; ++p) {
      poll(stop);
      for (int q = p + 1; q < n; ++q) turned = orthogonalize(W, V, p, q) || turned;
    }
  }
  Vector lengths;
  for (int j = 0; j < n; ++j)
    lengths.push_back(std::sqrt(dot(W.column(j), W.column(j), static_cast<std::size_t>(W.rows))));
  std::vector<int> order(lengths.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
    return lengths[static_cast<std::size_t>(a)] > lengths[static_cast<std::size_t>(b)];
  });
  SingularForm form = {Matrix(A.rows, n), Matrix(n, n), Vector()};
  for (int j = 0; j < n; ++j) {
    const int k = order[static_cast<std::size_t>(j)];
    const double s = lengths[static_cast<std::size_t>(k)];
    form.s.push_back(s);
    std::copy_n(V.column(k), n, form.V.column(j));
    for (int i = 0; i < A.rows; ++i) form.U(i, j) = s == 0.0 ? 0.0 : W(i, k) / s;
  }
  return form;
}

Vector singular_values(const Matrix& A, efi::StopFlag stop) {
  return singular_form(A.rows < A.cols ? transposed(A) : A, stop).s;
}

int numerical_rank(const Vector& s, int m, int n) {
  const double least = s.empty() ? 0.0 : s[0] * std::max(m, n) * kEpsilon;
  return static_cast<int>(std::count_if(s.begin(), s.end(), [&](double x) { return x > least; }));
}

}  // namespace audit
