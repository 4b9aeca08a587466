// The check of geninv.
#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/audit/check.hpp"
#include "host/audit/numeric/double_double.hpp"

namespace audit {

namespace {

// A matrix and a candidate for its generalized inverse; X is 2^shift times what it should be.
struct Pair {
  const Matrix& A;
  const Matrix& X;
  int shift;

  // A x and X x, and with the transposes; the products A X and X A come out in full size.
  Vector2 apply(const Matrix& B, const Vector2& x, bool transposed) const {
    Vector2 y(static_cast<std::size_t>(transposed ? B.cols : B.rows));
    if (transposed)
      add_transposed_product(B, x, 1.0, y);
    else
      add_product(B, x, 1.0, y);
    return y;
  }
  Vector2 unscaled(Vector2 x) const {
    scale(x.hi, -shift);
    scale(x.lo, -shift);
    return x;
  }
  Vector2 AX(const Vector2& x) const { return unscaled(apply(A, apply(X, x, false), false)); }
  Vector2 AXt(const Vector2& x) const { return unscaled(apply(X, apply(A, x, true), true)); }
  Vector2 XA(const Vector2& x) const { return unscaled(apply(X, apply(A, x, false), false)); }
  Vector2 XAt(const Vector2& x) const { return unscaled(apply(A, apply(X, x, true), true)); }
};

Vector difference(const Vector2& x, const Vector2& y) {
  Vector d(x.size());
  for (std::size_t i = 0; i < d.size(); ++i) d[i] = (x.hi[i] - y.hi[i]) + (x.lo[i] - y.lo[i]);
  return d;
}

// The trace of A X, in full size: the number of singular values that were kept.
double trace(const Pair& p) {
  const Matrix T = transposed(p.X);
  return std::ldexp(dot(p.A.elements.data(), T.elements.data(), T.elements.size()), -p.shift);
}

}  // namespace

// The four conditions of R. Penrose (A generalized inverse for matrices, 1955), for random vectors:
// A X A = A, X A X = X, and A X and X A symmetric. What they miss tells the parts of the error of
// X.
Verdict check_geninv(const Request& r) {
  constexpr double kSafety = 2.0;
  Matrix A = parts_of(matrix_at(r, 0)).re, X = parts_of(result_matrix(r)).re;
  if (largest(A) == 0.0) return {.error = largest(X) == 0.0 ? 0.0 : 1.0};
  const int n = A.cols;
  // More than this of A that X does not see is no rounding.
  const double negligible = 50.0 * A.rows * kEpsilon;
  const int of_A = normalize(A);
  if (largest(X) == 0.0) {
    Verdict none = alarm("all singular values are below TOL: the result is zero");
    none.is_meant = r.tolerance_is_chosen;
    return none;
  }
  const int of_X = normalize(X);
  const Pair p = {A, X, of_A + of_X};
  const double size = frobenius(A) * frobenius(X) * std::ldexp(1.0, -p.shift);
  if (!(size * kEpsilon * n < 1.0))
    return alarm("singular values that are rounding were kept: TOL is too small here");
  const double kept = trace(p);
  Random random = random_for(matrix_at(r, 0), 6);
  double error = 0.0, missing = 0.0;
  for (int probe = 0; probe < probes_for(n); ++probe) {
    const Vector2 u(random_signs(random, static_cast<std::size_t>(A.cols)));
    const Vector2 v(random_signs(random, static_cast<std::size_t>(A.rows)));
    const Vector2 Au = p.apply(A, u, false), Xv = p.apply(X, v, false);
    missing = std::max(missing, largest(difference(p.AX(Au), Au)) / frobenius(A));
    const Vector2 XAXv = p.XA(Xv);
    const double of_product = largest(difference(XAXv, Xv));
    const Vector skew = difference(p.AX(v), p.AXt(v));
    const double of_left = largest(product(X, skew));
    const double of_right = largest(difference(XAXv, p.XAt(Xv)));
    error = std::max({error, of_product, of_left, of_right});
  }
  error *= kSafety / frobenius(X);
  const double whole = std::round(kept);
  if (missing > negligible && std::fabs(kept - whole) < 0.1 && whole < n) {
    Verdict left =
        alarm(fmt::format("{} of {} singular values are above TOL, and those left out are "
                          "more than rounding",
                          whole, n));
    left.is_meant = r.tolerance_is_chosen;
    return left;
  }
  // The condition magnifies the rounding of the trace: it tells nothing but the number.
  if (!(std::fabs(kept - whole) < 0.1)) error = 1.0;
  return {.error = std::max(error, missing),
          .cause = fmt::format("the condition number is {:.0e}", size)};
}

}  // namespace audit
