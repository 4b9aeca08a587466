#include "norms/norm_cores.hpp"

#include <algorithm>
#include <cmath>

#include "eigen/hermitian/eigenvalues.hpp"
#include "norms/norm_kernels.hpp"
#include "norms/norm_plain.hpp"
#include "pack/elements.hpp"
#include "pack/frame/fast_path.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "svd/svds_core.hpp"

namespace matrix_pack {

namespace {

// The part arrays as the kernels read them: the first is null for a zero matrix, the second unless
// both exist. (The magnitude of 0 + iy is |y|, and its square y^2, to the bit.)
ConstComplexView real_parts(const aMatrix* a) {
  return {a->re, nullptr, a->leading_dimension};
}

ConstComplexView complex_parts(const aMatrix* a) {
  if (a->re == nullptr) return {a->im, nullptr, a->leading_dimension};
  return {a->re, a->im, a->leading_dimension};
}

// The view from element `at` on. (Nothing is added to a null pointer.)
ConstComplexView from_element(const ConstComplexView& a, Index at) {
  return {a.re + at, a.im == nullptr ? nullptr : a.im + at, a.ld};
}

double largest_column_sum(Index n, const ConstComplexView& a) {
  double largest = 0.0;
  double sums[kSumColumns];
  for (Index k = 0; a.re != nullptr && k < n; k += kSumColumns) {
    const Index count = std::min(kSumColumns, n - k);
    norm_kernels().column_sums(n, count, from_element(a, k * a.ld), sums);
    largest = norm_kernels().largest_sum(largest, count, sums);
  }
  return largest;
}

double largest_row_sum(Index n, const ConstComplexView& a) {
  double largest = 0.0;
  double sums[kSumRows];
  for (Index j = 0; a.re != nullptr && j < n; j += kSumRows) {
    const Index count = std::min(kSumRows, n - j);
    norm_kernels().row_sums(count, n, from_element(a, j), sums);
    largest = norm_kernels().largest_sum(largest, count, sums);
  }
  return largest;
}

// The same row by row, for where a fault has ended it: which fault comes first is then as
// documented.
double largest_row_sum_plainly(Index n, const ConstComplexView& a) {
  double largest = 0.0;
  for (Index i = 0; i < n; ++i) {
    double sum;
    plain::row_sums(1, n, from_element(a, i), &sum);
    if (sum > largest) largest = sum;
  }
  return largest;
}

double root_of_squares(Index n, const ConstComplexView& a) {
  double sum = 0.0;
  for (Index k = 0; a.re != nullptr && k < n; ++k) {
    const ConstComplexView column = from_element(a, k * a.ld);
    if (a.im == nullptr)
      for (Index j = 0; j < n; ++j) sum += column.re[j] * column.re[j];
    else
      for (Index j = 0; j < n; ++j)
        sum += column.re[j] * column.re[j] + column.im[j] * column.im[j];
  }
  return std::sqrt(sum);
}

template <class Norm>
const char* square_norm(const aMatrix* a, const ConstComplexView& parts, Norm norm_of,
                        double* norm) {
  if (a->rows != a->cols) return kMustBeSquare;
  *norm = norm_of(a->rows, parts);
  return nullptr;
}

const char* row_norm(const aMatrix* a, const ConstComplexView& parts, const FpState& before,
                     double* norm) {
  constexpr const char* kNoMessage = "";  // Faults alone ask for the plain sums.
  return fast_or_plain(
      kNoMessage, [&] { return square_norm(a, parts, largest_row_sum, norm); },
      [&] { return square_norm(a, parts, largest_row_sum_plainly, norm); }, before);
}

}  // namespace

const char* norm1_real(const aMatrix* a, double* norm) {
  return square_norm(a, real_parts(a), largest_column_sum, norm);
}

const char* norm1_complex(const aMatrix* a, double* norm) {
  return square_norm(a, complex_parts(a), largest_column_sum, norm);
}

const char* normi_real(const aMatrix* a, double* norm) {
  return row_norm(a, real_parts(a), FpState(), norm);
}

const char* normi_complex(const aMatrix* a, double* norm) {
  return row_norm(a, complex_parts(a), FpState(), norm);
}

const char* normi_guarded(const aMatrix* a, double* norm) {
  return row_norm(a, is_complex(a) ? complex_parts(a) : real_parts(a), FpState::guarded(), norm);
}

const char* norme_real(const aMatrix* a, double* norm) {
  return square_norm(a, real_parts(a), root_of_squares, norm);
}

const char* norme_complex(const aMatrix* a, double* norm) {
  return square_norm(a, complex_parts(a), root_of_squares, norm);
}

const char* norm2_real(aMatrix* a, double* norm) {
  if (const char* message = svds_core(a)) return message;
  *norm = a->rows == 0 ? 0.0 : std::fabs(elem_re(a, 0, 0));
  return nullptr;
}

const char* norm2_complex(const aMatrix* a, double* norm) {
  const Index n = a->rows;
  const Doubles eigenvalues = new_doubles(n);
  const Doubles re = new_part(n, n);
  const Doubles im = new_part(n, n);
  const Doubles work = new_doubles(kGramWork * n);
  // As large as the array that is there, gaps between its columns included.
  const Doubles zeros = a->re == nullptr ? new_zero_part(a->leading_dimension, n) : nullptr;
  if (!eigenvalues || !re || !im || !work || (a->re == nullptr && !zeros)) return kOutOfMemory;
  const ConstComplexView parts = {a->re == nullptr ? zeros.get() : a->re, a->im,
                                  a->leading_dimension};

  // The lower triangle, which is the one that is read, becomes a plain copy of the upper one: the
  // signs of the imaginary parts are deliberately not changed. What is read is then the conjugate
  // of A^H A, and that has the same eigenvalues.
  norm_kernels().gram(n, parts, re.get(), im.get(), work.get());
  aMatrix b = {};
  b.leading_dimension = b.rows = b.cols = a->rows;
  b.re = re.get();
  b.im = im.get();
  if (const char* message = hermitian_eigenvalues(&b, eigenvalues.get())) return message;

  double largest = eigenvalues[0];
  for (Index i = 1; i < n; ++i)
    if (std::fabs(eigenvalues[i]) > largest) largest = std::fabs(eigenvalues[i]);
  *norm = std::sqrt(largest);
  return nullptr;
}

}  // namespace matrix_pack
