#include "host/audit/numeric/golub_kahan.hpp"

#include <algorithm>
#include <cmath>

#include "host/audit/numeric/singular.hpp"

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

}  // namespace

LargestValue largest_singular_value(const Map& map, const Map& transpose, int n, Random random,
                                    efi::StopFlag stop) {
  constexpr int kMostSteps = 40;
  Basis left, right;
  Vector start(static_cast<std::size_t>(n));
  for (double& x : start) x = random.unit();
  extend(right, start);
  Vector alpha, beta;
  for (int k = 0; k < std::min(kMostSteps, n); ++k) {
    poll(stop);
    alpha.push_back(extend(left, map(right.back())));
    beta.push_back(extend(right, transpose(left.back())));
    if (beta.back() <= kEpsilon * largest(alpha)) break;
  }
  // On these vectors the map is bidiagonal: alpha on the diagonal, beta above it.
  const auto steps = static_cast<int>(alpha.size());
  Matrix B(steps, steps);
  for (int k = 0; k < steps; ++k) {
    B(k, k) = alpha[static_cast<std::size_t>(k)];
    if (k + 1 < steps) B(k, k + 1) = beta[static_cast<std::size_t>(k)];
  }
  const SingularForm form = singular_form(B, stop);
  LargestValue result = {form.s[0], std::fabs(beta.back() * form.U(steps - 1, 0)),
                         Vector(static_cast<std::size_t>(n))};
  result.open += 8.0 * kEpsilon * form.s[0];
  for (int k = 0; k < steps; ++k)
    for (std::size_t i = 0; i < result.right.size(); ++i)
      result.right[i] += form.V(k, 0) * right[static_cast<std::size_t>(k)][i];
  return result;
}

LargestValue largest_singular_value(const Parts& parts, Random random, efi::StopFlag stop) {
  const Matrix A = real_form(parts, parts.is_complex());
  return largest_singular_value([&](const Vector& x) { return product(A, x); },
                                [&](const Vector& x) { return transposed_product(A, x); }, A.cols,
                                random, stop);
}

}  // namespace audit
