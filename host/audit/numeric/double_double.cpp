#include "host/audit/numeric/double_double.hpp"

namespace audit {

void add_product(const Matrix& A, const Vector2& x, double sign, Vector2& r) {
  const auto m = static_cast<std::size_t>(A.rows);
  double* const rh = r.hi.data();
  double* const rl = r.lo.data();
  for (int j = 0; j < A.cols; ++j) {
    const double hi = sign * x.hi[static_cast<std::size_t>(j)];
    const double lo = sign * x.lo[static_cast<std::size_t>(j)];
    const double* const a = A.column(j);
    if (hi == 0.0) continue;
    for (std::size_t i = 0; i < m; ++i) {
      Double2 p = two_product(a[i], hi);
      p.lo += a[i] * lo;
      const Double2 s = sum({rh[i], rl[i]}, p);
      rh[i] = s.hi;
      rl[i] = s.lo;
    }
  }
}

void add_transposed_product(const Matrix& A, const Vector2& x, double sign, Vector2& r) {
  // Sums that do not wait for each other.
  constexpr std::size_t kLanes = 4;
  const double* const xh = x.hi.data();
  const double* const xl = x.lo.data();
  for (int j = 0; j < A.cols; ++j) {
    const double* const a = A.column(j);
    double hi[kLanes] = {}, lo[kLanes] = {};
    const auto take = [&](std::size_t lane, std::size_t i) {
      Double2 p = two_product(a[i], xh[i]);
      p.lo += a[i] * xl[i];
      const Double2 s = sum({hi[lane], lo[lane]}, p);
      hi[lane] = s.hi;
      lo[lane] = s.lo;
    };
    std::size_t i = 0;
    for (; i + kLanes <= x.size(); i += kLanes)
      for (std::size_t lane = 0; lane < kLanes; ++lane) take(lane, i + lane);
    for (; i < x.size(); ++i) take(0, i);
    Double2 s = {hi[0], lo[0]};
    for (std::size_t lane = 1; lane < kLanes; ++lane) s = sum(s, {hi[lane], lo[lane]});
    r.add(static_cast<std::size_t>(j), {sign * s.hi, sign * s.lo});
  }
}

}  // namespace audit
