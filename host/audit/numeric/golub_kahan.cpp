#include "host/audit/numeric/golub_kahan.hpp"

#include <algorithm>
#include <cmath>

namespace audit {

namespace {

using Basis = std::vector<Vector>;

// x := x less its parts along the basis, twice for safety; then of length 1. Gives that length.
double extend(Basis& basis, Vector x) {
  for (int pass = 0; pass < 2; ++pass)
    for (const Vector& q : basis) {
      const double along = dot(q.data(), x.data(), x.size());
      for (std::size_t i = 0; i < x.size(); ++i) x[i] -= along * q[i];
    }
  const double length = euclidean(x);
  if (length > 0.0)
    for (double& a : x) a /= length;
  basis.push_back(std::move(x));
  return length;
}

// The symmetric tridiagonal matrix T = BᵀB of an upper bidiagonal B.
struct Tridiagonal {
  Vector d, e;

  Tridiagonal(const Vector& alpha, const Vector& beta) : d(alpha.size()), e(alpha.size() - 1) {
    for (std::size_t k = 0; k < d.size(); ++k) {
      d[k] = alpha[k] * alpha[k] + (k == 0 ? 0.0 : beta[k - 1] * beta[k - 1]);
      if (k + 1 < d.size()) e[k] = alpha[k] * beta[k];
    }
  }
  // The pivots of μ I - T; fewer where one is not positive.
  Vector pivots(double mu) const {
    Vector q;
    for (std::size_t k = 0; k < d.size(); ++k) {
      q.push_back(mu - d[k] - (k == 0 ? 0.0 : e[k - 1] * e[k - 1] / q.back()));
      if (!(q.back() > 0.0)) return {};
    }
    return q;
  }
  // x := (μ I - T)⁻¹ x, of length 1, with those pivots.
  void solve(const Vector& q, Vector& x) const {
    for (std::size_t k = 1; k < d.size(); ++k) x[k] += e[k - 1] / q[k - 1] * x[k - 1];
    for (std::size_t k = d.size(); k-- > 0;)
      x[k] = (x[k] + (k + 1 < d.size() ? e[k] * x[k + 1] : 0.0)) / q[k];
    const double length = euclidean(x);
    for (double& a : x) a /= length;
  }
};

// The right singular vector of the largest singular value of B: the largest eigenvalue of BᵀB by
// bisection, its vector by inverse iteration from above it, where all pivots are positive (B. N.
// Parlett, The Symmetric Eigenvalue Problem, sections 3.3 and 4.2).
Vector largest_right_vector(const Vector& alpha, const Vector& beta) {
  constexpr int kSteps = 3;
  const Tridiagonal T(alpha, beta);
  Vector x(alpha.size(), 1.0 / std::sqrt(static_cast<double>(alpha.size())));
  double least = 0.0, most = 0.0;
  for (std::size_t k = 0; k < T.d.size(); ++k)
    most = std::max(most, T.d[k] + (k == 0 ? 0.0 : T.e[k - 1]) + (k < T.e.size() ? T.e[k] : 0.0));
  if (most == 0.0) return x;
  most *= 1.0 + 8.0 * kEpsilon;
  while (most - least > 4.0 * kEpsilon * most) {
    const double middle = 0.5 * (least + most);
    (T.pivots(middle).empty() ? least : most) = middle;
  }
  const Vector q = T.pivots(most);
  for (int step = 0; step < kSteps && !q.empty(); ++step) T.solve(q, x);
  return x;
}

}  // namespace

LargestValue largest_singular_value(const Map& map, const Map& transpose, int n, Random random,
                                    efi::StopFlag stop, int most_steps) {
  Basis left, right;
  Vector start(static_cast<std::size_t>(n));
  for (double& x : start) x = random.unit();
  extend(right, start);
  Vector alpha, beta;
  for (int k = 0; k < std::min(most_steps, n); ++k) {
    poll(stop);
    alpha.push_back(extend(left, map(right.back())));
    beta.push_back(extend(right, transpose(left.back())));
    if (beta.back() <= kEpsilon * largest(alpha)) break;
  }
  // On these vectors the map is bidiagonal: alpha on the diagonal, beta above it.
  const Vector x = largest_right_vector(alpha, beta);
  Vector y(x.size());
  for (std::size_t k = 0; k < y.size(); ++k)
    y[k] = alpha[k] * x[k] + (k + 1 < x.size() ? beta[k] * x[k + 1] : 0.0);
  LargestValue result = {euclidean(y), 0.0, Vector(static_cast<std::size_t>(n))};
  if (result.value > 0.0) result.open = std::fabs(beta.back() * y.back()) / result.value;
  result.open += 8.0 * kEpsilon * result.value;
  for (std::size_t k = 0; k < x.size(); ++k)
    for (std::size_t i = 0; i < result.right.size(); ++i) result.right[i] += x[k] * right[k][i];
  return result;
}

LargestValue largest_singular_value(const Parts& parts, Random random, efi::StopFlag stop,
                                    int most_steps) {
  const Matrix A = real_form(parts, parts.is_complex());
  return largest_singular_value([&](const Vector& x) { return product(A, x); },
                                [&](const Vector& x) { return transposed_product(A, x); }, A.cols,
                                random, stop, most_steps);
}

}  // namespace audit
