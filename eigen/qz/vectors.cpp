// The eigenvectors of a quasi-triangular pair, by back-substitution.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "eigen/qz/reflector_kernels.hpp"
#include "eigen/qz/stages.hpp"
#include "eigen/shared/back_transformation_kernels.hpp"
#include "eigen/shared/scale_columns.hpp"
#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// One vector on its way: (beta A - alpha B) x = 0. x holds the components that are known, r what
// they add up to in the rows above.
struct Substitution {
  const QzPair& pair;
  Complex alpha;
  double beta;
  double epsb;  // Stands in for a divisor that is zero.
  double *xr, *xi, *rr, *ri;

  bool real() const { return alpha.im == 0.0; }
  Complex r(Index i) const { return {rr[i], ri[i]}; }
  void set_x(Index i, Complex x) const {
    xr[i] = x.re;
    xi[i] = x.im;
  }
  // Element (i, j) of beta A - alpha B, on or above the diagonal.
  Complex element(Index i, Index j) const {
    return {beta * pair.A(i, j) - alpha.re * pair.B(i, j), -alpha.im * pair.B(i, j)};
  }
};

bool ends_block(const QzPair& p, Index i) {
  return i > 0 && p.A(i, i - 1) != 0.0;
}

Complex divide_safely(Complex x, Complex divisor, double epsb) {
  return divide(x, is_zero(divisor) ? Complex{epsb, 0.0} : divisor);
}

Complex negative(Complex z) {
  return {-z.re, -z.im};
}

void solve_row(const Substitution& s, Index i) {
  s.set_x(i, divide_safely(negative(s.r(i)), s.element(i, i), s.epsb));
}

// Rows i and i + 1, [w x; y z], form a block of order 2. The lower component by Cramer's rule, the
// upper one from the row with the larger coefficient.
void solve_block(const Substitution& s, Index i) {
  const Complex w = s.element(i, i);
  const Complex x = s.element(i, i + 1);
  const Complex y = {s.beta * s.pair.A(i + 1, i), 0.0};
  const Complex z = s.element(i + 1, i + 1);
  // Products that may fault are not arguments of one call: their order would be the compiler's.
  const Complex wz = multiply(w, z);
  const Complex determinant = subtract(wz, multiply(x, y));
  const Complex from_upper = multiply(y, s.r(i));
  const Complex lower =
      divide_safely(subtract(from_upper, multiply(w, s.r(i + 1))), determinant, s.epsb);
  s.set_x(i + 1, lower);
  const bool from_lower = std::fabs(y.re) > std::fabs(w.re) + std::fabs(w.im);
  const Complex rest =
      from_lower ? add(s.r(i + 1), multiply(z, lower)) : add(s.r(i), multiply(x, lower));
  s.set_x(i, divide_safely(negative(rest), from_lower ? y : w, s.epsb));
}

// The component k is known: its share in the first `rows` rows.
void settle(const Substitution& s, Index k, Index rows) {
  const QzKernels& kernels = qz_kernels();
  const double* a = s.pair.column_of_a(k);
  const double* b = s.pair.column_of_b(k);
  if (s.real())
    kernels.add_pencil(rows, s.beta, s.alpha.re, a, b, s.xr[k], s.rr);
  else
    kernels.add_complex_pencil(rows, s.beta, s.alpha.re, s.alpha.im, a, b, s.xr[k], s.xi[k], s.rr,
                               s.ri);
}

double magnitude(Complex z) {
  return std::max(std::fabs(z.re), std::fabs(z.im));
}

// Keeps components i .. end-1, and the sums above them, in range: defective pairs divide by the
// tolerance again and again.
void keep_in_range(const Substitution& s, Index i, Index end) {
  if (magnitude({s.xr[i], s.xi[i]}) <= kGrown && magnitude({s.xr[i + 1], s.xi[i + 1]}) <= kGrown)
    return;
  const VectorKernels& kernels = vector_kernels();
  kernels.scale(end - i, kShrink, s.xr + i);
  kernels.scale(end - i, kShrink, s.xi + i);
  kernels.scale(i, kShrink, s.rr);
  kernels.scale(i, kShrink, s.ri);
}

// The components above `known`, of which those up to end - 1 are known and settled.
void substitute(const Substitution& s, Index known, Index end) {
  Index i = known;
  while (i > 0) {
    const bool block = ends_block(s.pair, i - 1);
    const Index first = block ? i - 2 : i - 1;
    if (block)
      solve_block(s, first);
    else
      solve_row(s, first);
    keep_in_range(s, first, end);
    for (Index k = i; k-- > first;) settle(s, k, first);
    i = first;
  }
}

// The vector, whose components end before `end`, in original coordinates: to column k of Z, and its
// imaginary part to column k + 1. Its largest component gets the modulus 1.
void back_transform(const Substitution& s, Index end, Index k) {
  const QzPair& p = s.pair;
  const Index ends[] = {end, end};
  double* const re = p.column_of_z(k);
  const double* const im = re + p.n;
  const int parts = s.real() ? 1 : 2;
  back_transformation_kernels().combine(p.n, {p.z, p.n}, parts, {s.xr, p.n}, ends, {re, p.n});
  double largest = 0.0;
  for (Index i = 0; i < p.n; ++i) {
    const double modulus = s.real() ? std::fabs(re[i]) : std::sqrt(re[i] * re[i] + im[i] * im[i]);
    if (modulus > largest) largest = modulus;
  }
  if (largest > 0.0) vector_kernels().divide(parts * p.n, largest, re);
}

// The last component, and for a complex vector the one above it, by the last row: the last is i, so
// that the real parts end above it.
void start(const Substitution& s, Index k, Index last) {
  std::fill(s.xr, s.xr + 4 * s.pair.n, 0.0);
  if (s.real()) return s.set_x(last, {1.0, 0.0});
  const double y = s.beta * s.pair.A(last, k);
  const Complex w = s.element(last, last);
  s.set_x(last, {0.0, 1.0});
  s.set_x(k, {w.im / y, -w.re / y});
}

// The power of two at or below x > 0.
double power_of_two(double x) {
  constexpr std::uint64_t kExponentBits = 0x7FF0'0000'0000'0000;
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) & kExponentBits);
}

// The vector of eigenvalue k. Only the ratio of alpha and beta matters: the larger one comes to be
// between 1 and 2, so that products stay in range.
Substitution substitution(const QzPair& pair, const QzValues& values, Index k, double* work) {
  const double alfr = values.alfr[k];
  const double alfi = values.alfi[k];
  const double beta = values.beta[k];
  const double largest = std::max({std::fabs(alfr), std::fabs(alfi), beta});
  const double scale = largest >= std::numeric_limits<double>::min() ? power_of_two(largest) : 1.0;
  const Index n = pair.n;
  return {pair,         {alfr / scale, alfi / scale},
          beta / scale, pair.B(n - 1, 0),
          work,         work + n,
          work + 2 * n, work + 3 * n};
}

}  // namespace

void qz_vectors(const QzPair& pair, const QzValues& values, double* work) {
  for (Index last = pair.n - 1; last >= 0; --last) {
    const Index k = ends_block(pair, last) ? last - 1 : last;
    const Substitution s = substitution(pair, values, k, work);
    start(s, k, last);
    for (Index j = last; j >= k; --j) settle(s, j, k);
    substitute(s, k, last + 1);
    back_transform(s, last + 1, k);
    last = k;
  }
}

}  // namespace matrix_pack
