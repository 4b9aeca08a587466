// Sums of two doubles that together hold twice the digits, from operations without an error. They
// rely on each operation being rounded once: nothing may be fused or reordered.
//
// Sources: T. J. Dekker, A floating-point technique for extending the available precision (1971);
// D. E. Knuth, The Art of Computer Programming, volume 2, section 4.2.2.
#pragma once

#include <vector>

#include "host/audit/numeric/matrix.hpp"

namespace audit {

// The unevaluated sum hi + lo, where lo is at most half a unit in the last place of hi.
struct Double2 {
  double hi = 0.0, lo = 0.0;
};

// a + b exactly.
inline Double2 two_sum(double a, double b) {
  const double s = a + b, t = s - a;
  return {s, (a - (s - t)) + (b - t)};
}

// a b exactly, for factors below 2^996 whose product does not come near the smallest number.
inline Double2 two_product(double a, double b) {
  constexpr double kSplitter = 0x1p27 + 1;
  const double p = a * b, u = kSplitter * a, v = kSplitter * b;
  const double a1 = u - (u - a), a2 = a - a1, b1 = v - (v - b), b2 = b - b1;
  return {p, ((a1 * b1 - p) + a1 * b2 + a2 * b1) + a2 * b2};
}

inline Double2 sum(const Double2& x, const Double2& y) {
  const Double2 s = two_sum(x.hi, y.hi);
  const double lo = s.lo + (x.lo + y.lo), hi = s.hi + lo;
  return {hi, lo - (hi - s.hi)};
}

inline Double2 product(const Double2& x, const Double2& y) {
  Double2 p = two_product(x.hi, y.hi);
  p.lo += x.hi * y.lo + x.lo * y.hi;
  const double hi = p.hi + p.lo;
  return {hi, p.lo - (hi - p.hi)};
}

inline Double2 quotient(const Double2& x, const Double2& y) {
  const double first = x.hi / y.hi;
  const Double2 rest = sum(x, product(y, Double2{-first, 0.0}));
  const double second = rest.hi / y.hi, hi = first + second;
  return {hi, second - (hi - first)};
}

// A vector of such numbers.
struct Vector2 {
  Vector hi, lo;

  explicit Vector2(std::size_t n) : hi(n), lo(n) {}
  explicit Vector2(Vector high) : hi(std::move(high)), lo(hi.size()) {}
  std::size_t size() const { return hi.size(); }
  Double2 operator[](std::size_t i) const { return {hi[i], lo[i]}; }
  void set(std::size_t i, const Double2& x) {
    hi[i] = x.hi;
    lo[i] = x.lo;
  }
  // Element i := element i + x.
  void add(std::size_t i, const Double2& x) { set(i, sum((*this)[i], x)); }
};

// r := r + sign A x, where sign is 1 or -1; 34 operations for each element of A.
void add_product(const Matrix& A, const Vector2& x, double sign, Vector2& r);
// r := r + sign Aᵀ x.
void add_transposed_product(const Matrix& A, const Vector2& x, double sign, Vector2& r);

}  // namespace audit
