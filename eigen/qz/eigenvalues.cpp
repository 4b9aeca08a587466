// The eigenvalues of a quasi-triangular pair.
#include <cmath>

#include "eigen/qz/reflector.hpp"
#include "eigen/qz/stages.hpp"
#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/epsilon.hpp"

namespace matrix_pack {

namespace {

// Times sqrt(n), the bound below which a discriminant counts as rounding error and its block as one
// with a double real eigenvalue. A hundred times what counts as zero in alpha and beta.
constexpr double kTinyDiscriminant = 100.0 * kEps;

// A block of order 2 on rows and columns k and k + 1: of A, and of the triangular B, each divided
// by the sum of its magnitudes.
struct Block {
  double a11, a12, a21, a22, b11, b12, b22;
  double a_size, b_size;
};

// The roots of det(A - lambda B) of a block: shift + middle +- sqrt(discriminant), the shift being
// the smaller one of its two diagonal ratios.
struct Roots {
  double shift, middle, discriminant;
};

Block scaled_block(const QzPair& p, Index k) {
  const double a_size = std::fabs(p.A(k, k)) + std::fabs(p.A(k, k + 1)) + std::fabs(p.A(k + 1, k)) +
                        std::fabs(p.A(k + 1, k + 1));
  const double b_size =
      std::fabs(p.B(k, k)) + std::fabs(p.B(k, k + 1)) + std::fabs(p.B(k + 1, k + 1));
  return {p.A(k, k) / a_size,
          p.A(k, k + 1) / a_size,
          p.A(k + 1, k) / a_size,
          p.A(k + 1, k + 1) / a_size,
          p.B(k, k) / b_size,
          p.B(k, k + 1) / b_size,
          p.B(k + 1, k + 1) / b_size,
          a_size,
          b_size};
}

Roots block_roots(const Block& m) {
  const double ratio1 = m.a11 / m.b11;
  const double ratio2 = m.a22 / m.b22;
  const double below = m.a21 / (m.b11 * m.b22);
  const bool first = std::fabs(ratio1) <= std::fabs(ratio2);
  const double shift = first ? ratio1 : ratio2;
  const double other = first ? (m.a22 - shift * m.b22) / m.b22 : (m.a11 - shift * m.b11) / m.b11;
  const double middle = 0.5 * (other - below * m.b12);
  return {shift, middle, middle * middle + below * (m.a12 - shift * m.b12)};
}

// A reflector on columns k + 1 and k.
void reflect_cols(const QzPair& p, Index k, const Reflector2& h) {
  const QzKernels& kernels = qz_kernels();
  const Index row = p.z != nullptr ? 0 : k;
  kernels.reflect_cols2(h, k + 2 - row, &p.A(row, k), p.n);
  kernels.reflect_cols2(h, k + 2 - row, &p.B(row, k), p.n);
  if (p.z != nullptr) kernels.reflect_cols2(h, p.n, p.column_of_z(k), p.n);
}

// A reflector on rows k and k + 1.
void reflect_rows(const QzPair& p, Index k, const Reflector2& h) {
  const Index cols = p.z != nullptr ? p.n - k : 2;
  qz_kernels().chase_rows2(1, &h, cols, &p.A(k, k), &p.B(k, k), p.n);
}

void take_real(const QzPair& p, const QzValues& values, Index k) {
  values.alfr[k] = p.B(k, k) < 0.0 ? -p.A(k, k) : p.A(k, k);
  values.alfi[k] = 0.0;
  values.beta[k] = std::fabs(p.B(k, k));
}

// The block of order 2 has become triangular.
void take_split(const QzPair& p, const QzValues& values, Index k) {
  p.A(k + 1, k) = 0.0;
  p.B(k + 1, k) = 0.0;
  take_real(p, values, k);
  take_real(p, values, k + 1);
}

// Two real eigenvalues, one of which is `value`: the pair A - value B of the block is singular.
void split_block(const QzPair& p, Index k, const Block& m, double value) {
  const double a11 = m.a11 - value * m.b11;
  const double a12 = m.a12 - value * m.b12;
  const double a22 = m.a22 - value * m.b22;
  const bool from_second = std::fabs(a11) + std::fabs(a12) < std::fabs(m.a21) + std::fabs(a22);
  reflect_cols(p, k, from_second ? reflector(a22, m.a21) : reflector(a12, a11));
  // Of A and B, the one whose first column is the larger, relative to its block.
  const bool from_a = std::fabs(value) > 1.0;
  reflect_rows(p, k,
               from_a ? reflector(p.A(k, k), p.A(k + 1, k)) : reflector(p.B(k, k), p.B(k + 1, k)));
}

// The plane rotation with a real cosine and a complex sine that takes (x, y) to (*, 0).
struct ComplexGivens {
  double c;
  Complex s;
};

ComplexGivens complex_givens(Complex x, Complex y) {
  const double c = std::sqrt(x.re * x.re + x.im * x.im);
  if (c == 0.0) return {0.0, {1.0, 0.0}};
  const Complex product = multiply_conjugate(y, x);
  const Complex s = {product.re / c, product.im / c};
  const double r = std::sqrt(c * c + s.re * s.re + s.im * s.im);
  return {c / r, {s.re / r, s.im / r}};
}

// One of a complex pair, a / b, as eigenvalue j.
void take_ratio(const QzValues& values, Index j, const Block& m, Complex a, Complex b) {
  const double r = std::sqrt(b.re * b.re + b.im * b.im);
  const Complex product = multiply_conjugate(a, b);
  values.beta[j] = m.b_size * r;
  values.alfr[j] = m.a_size * product.re / r;
  values.alfi[j] = m.a_size * product.im / r;
}

// A complex pair re +- i im: the diagonal that unitary transformations would give the block tells
// alpha and beta; the transformations are not applied. The one with the positive imaginary part
// stands first.
void take_complex(const QzValues& values, Index k, const Block& m, double re, double im) {
  const Complex a11 = {m.a11 - re * m.b11, im * m.b11};
  const Complex a12 = {m.a12 - re * m.b12, im * m.b12};
  const Complex a22 = {m.a22 - re * m.b22, im * m.b22};
  const bool from_second =
      std::fabs(a11.re) + std::fabs(a11.im) + std::fabs(a12.re) + std::fabs(a12.im) <
      std::fabs(m.a21) + std::fabs(a22.re) + std::fabs(a22.im);
  // The rotation of columns makes the block's pair triangular together with that of rows.
  const auto [cz, z] =
      from_second ? complex_givens(a22, {-m.a21, 0.0}) : complex_givens(a12, {-a11.re, -a11.im});
  const bool from_a = std::fabs(re) + im > 1.0;
  const auto [cq, q] = from_a ? complex_givens({cz * m.a11 + z.re * m.a12, z.im * m.a12},
                                               {cz * m.a21 + z.re * m.a22, z.im * m.a22})
                              : complex_givens({cz * m.b11 + z.re * m.b12, z.im * m.b12},
                                               {z.re * m.b22, z.im * m.b22});
  // The diagonals of A and B behind both.
  const Complex qz = multiply_conjugate(z, q);
  const Complex a_first = {cq * cz * m.a11 + cq * z.re * m.a12 + q.re * cz * m.a21 + qz.re * m.a22,
                           cq * z.im * m.a12 - q.im * cz * m.a21 + qz.im * m.a22};
  const Complex b_first = {cq * cz * m.b11 + cq * z.re * m.b12 + qz.re * m.b22,
                           cq * z.im * m.b12 + qz.im * m.b22};
  const Complex a_last = {qz.re * m.a11 - q.re * cz * m.a12 - cq * z.re * m.a21 + cq * cz * m.a22,
                          -qz.im * m.a11 - q.im * cz * m.a12 + cq * z.im * m.a21};
  const Complex b_last = {qz.re * m.b11 - q.re * cz * m.b12 + cq * cz * m.b22,
                          -qz.im * m.b11 - q.im * cz * m.b12};
  const bool swapped = multiply_conjugate(a_first, b_first).im < 0.0;
  take_ratio(values, k, m, swapped ? a_last : a_first, swapped ? b_last : b_first);
  take_ratio(values, k + 1, m, swapped ? a_first : a_last, swapped ? b_first : b_last);
  // Opposite signs whatever the rounding.
  values.alfi[k] = std::fabs(values.alfi[k]);
  values.alfi[k + 1] = -std::fabs(values.alfi[k + 1]);
}

// Rows and columns k and k + 1; elements of B up to `epsb` count as zero.
void take_block(const QzPair& p, const QzValues& values, Index k, double epsb) {
  if (std::fabs(p.B(k, k)) <= epsb) {
    reflect_rows(p, k, reflector(p.A(k, k), p.A(k + 1, k)));
    return take_split(p, values, k);
  }
  if (std::fabs(p.B(k + 1, k + 1)) <= epsb) {
    reflect_cols(p, k, reflector(p.A(k + 1, k + 1), p.A(k + 1, k)));
    return take_split(p, values, k);
  }
  const Block m = scaled_block(p, k);
  auto [shift, middle, discriminant] = block_roots(m);
  if (std::fabs(discriminant) < std::sqrt(static_cast<double>(p.n)) * kTinyDiscriminant)
    discriminant = 0.0;
  if (discriminant < 0.0)
    return take_complex(values, k, m, shift + middle, std::sqrt(-discriminant));
  split_block(p, k, m, shift + (middle + std::copysign(std::sqrt(discriminant), middle)));
  take_split(p, values, k);
}

}  // namespace

void qz_eigenvalues(const QzPair& pair, const QzValues& values) {
  // The tolerance of the iteration stands below the diagonal, where it must not disturb a block.
  const double epsb = pair.B(pair.n - 1, 0);
  if (pair.n >= 2) pair.B(pair.n - 1, 0) = 0.0;
  for (Index k = pair.n - 1; k >= 0; --k) {
    if (k == 0 || pair.A(k, k - 1) == 0.0) {
      take_real(pair, values, k);
    } else {
      --k;
      take_block(pair, values, k, epsb);
    }
  }
  if (pair.n >= 2) pair.B(pair.n - 1, 0) = epsb;
}

}  // namespace matrix_pack
