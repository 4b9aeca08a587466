#include "host/audit/numeric/double_double.hpp"

namespace audit {

void add_product(const Matrix& A, const Vector2& x, double sign, Vector2& r) {
  const auto m = static_cast<std::size_t>(A.rows);
  for (int j = 0; j < A.cols; ++j) {
    const double hi = sign * x.hi[static_cast<std::size_t>(j)];
    const double lo = sign * x.lo[static_cast<std::size_t>(j)];
    const double* const a = A.column(j);
    if (hi == 0.0) continue;
    for (std::size_t i = 0; i < m; ++i) {
      Double2 p = two_product(a[i], hi);
      p.lo += a[i] * lo;
      r.add(i, p);
    }
  }
}

void add_transposed_product(const Matrix& A, const Vector2& x, double sign, Vector2& r) {
  for (int j = 0; j < A.cols; ++j) {
    const double* const a = A.column(j);
    Double2 s;
    for (std::size_t i = 0; i < x.size(); ++i) {
      Double2 p = two_product(a[i], x.hi[i]);
      p.lo += a[i] * x.lo[i];
      s = sum(s, p);
    }
    r.add(static_cast<std::size_t>(j), {sign * s.hi, sign * s.lo});
  }
}

}  // namespace audit
