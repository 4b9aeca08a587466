// Real matrices and vectors to check with, and their scaling by powers of two, which changes no
// digit. A complex m x n matrix R + iS may stand as the real one [R -S; S R] of twice the size:
// sums, products, inverses and Euclidean norms of vectors are the same.
#pragma once

#include <utility>
#include <vector>

#include "host/arguments/random.hpp"
#include "host/audit/numeric/scratch.hpp"
#include "host/efiutils/system/streams.hpp"
#include "pack/host_interface.hpp"

namespace audit {

using Vector = std::vector<double, Scratch<double>>;
using arguments::Random;

inline constexpr double kEpsilon = 0x1p-52;

// A column-major matrix.
struct Matrix {
  int rows = 0, cols = 0;
  Vector elements;

  Matrix() = default;
  Matrix(int m, int n)
      : rows(m), cols(n), elements(static_cast<std::size_t>(m) * static_cast<std::size_t>(n)) {}
  double* column(int j) {
    return elements.data() + static_cast<std::size_t>(j) * static_cast<std::size_t>(rows);
  }
  const double* column(int j) const {
    return elements.data() + static_cast<std::size_t>(j) * static_cast<std::size_t>(rows);
  }
  double& operator()(int i, int j) { return column(j)[i]; }
  double operator()(int i, int j) const { return column(j)[i]; }
};

// A value of the host's, its parts apart. The imaginary one has no elements where it is absent.
struct Parts {
  Matrix re, im;
  bool is_complex() const { return !im.elements.empty(); }
};
Parts parts_of(const aMatrix* m);

// The real matrix that stands for it: of twice the size if it is complex, or is to be taken as
// such.
Matrix real_form(const Parts& m, bool as_complex);
Matrix real_form(Parts&& m, bool as_complex);
inline Matrix real_form(const aMatrix* m) {
  Parts parts = parts_of(m);
  const bool complex = parts.is_complex();
  return real_form(std::move(parts), complex);
}
// A column: its real parts, then the imaginary ones.
Vector column_form(const Parts& m, int col, bool as_complex);

double largest(const Vector& x);
double euclidean(const Vector& x);
inline double largest(const Matrix& A) {
  return largest(A.elements);
}
// The Euclidean norm of all elements, and the largest sums of magnitudes in a column and a row.
double frobenius(const Matrix& A);
double norm_1(const Matrix& A);
double norm_inf(const Matrix& A);

// A x and Aᵀ x.
Vector product(const Matrix& A, const Vector& x);
Vector transposed_product(const Matrix& A, const Vector& x);
Matrix transposed(const Matrix& A);
double dot(const double* x, const double* y, std::size_t n);
bool all_finite(const double* x, std::size_t n);
// The index, from `first` on, of the first element of the largest magnitude.
int index_of_largest(const double* x, int first, int n);

// Elements of random sign and magnitude 1.
Vector random_signs(Random& random, std::size_t n);

// --- Scaling ---

// The exponent e for which 2^e <= x < 2^(e + 1); of 0, one below all others.
int exponent(double x);
inline constexpr int kZeroExponent = -100000;

// The matrix with its largest element brought to [1, 2), and by which power of two; 0 of a matrix
// of zeros.
int normalize(Matrix& A);
int normalize(Parts& m);
void scale(Matrix& A, int power);
void scale(Vector& x, int power);

// Exponents of scale factors.
using Exponents = std::vector<int>;
// Row i times 2^rows[i], column j times 2^cols[j]; either may be empty.
void scale(Matrix& A, const Exponents& rows, const Exponents& cols);

struct Equilibration {
  Exponents rows, cols;
};
// Scales rows and columns so that the largest element of each is about 1 (D. Ruiz, A scaling
// algorithm to equilibrate both rows and columns norms in matrices, 2001, with powers of two).
Equilibration equilibrate(Matrix& A);
// The largest exponent that D_r A D_c has; kZeroExponent of zeros.
int largest_exponent(const Matrix& A, const Exponents& rows, const Exponents& cols);
// What `equilibrate` would scale a value with, which stays as it is; a complex element counts as
// the larger of its parts.
Equilibration equilibration(const aMatrix* m);
// D_r A D_c x without a copy of A. A complex matrix takes and gives complex columns: the real
// parts, then the imaginary ones; so does a real one if x is twice as long as A has columns.
Vector scaled_product(const aMatrix* A, const Exponents& rows, const Exponents& cols,
                      const Vector& x);
// The exponents that bring the largest element of each column to [1, 2).
Exponents column_exponents(const Matrix& A);
Exponents row_exponents(const Matrix& A);

// The largest |x_i| 2^(e_i - shift), and the shift for which it is in [1, 2).
double largest(const Vector& x, const Exponents& e, int shift);
int exponent(const Vector& x, const Exponents& e);

// --- Ending early ---

struct Stopped {};
// Throws Stopped once the flag is set. A null flag never is.
inline void poll(efi::StopFlag stop) {
  if (stop != nullptr && *stop != 0) throw Stopped();
}

}  // namespace audit
