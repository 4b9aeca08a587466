// The reduced row echelon form by Gauss-Jordan elimination.
#include <algorithm>
#include <cmath>
#include <utility>

#include "linsys/linsys.hpp"
#include "norms/norm_cores.hpp"
#include "pack/elements.hpp"
#include "pack/frame/evaluator_frame.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/numeric/vector_kernels.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

// However large the matrix, a pivot of this magnitude counts.
constexpr double kLargestTolerance = 1e-10;

// A rows x cols array, column by column.
struct ColumnTable {
  Index rows;
  Index cols;
  double* elements;

  double* column(Index c) const { return elements + c * rows; }
};

// Finds the pivot of row p among rows p... of the columns from `c` on: the first column in which
// something is larger than tol, and there the first row of the largest magnitude. Advances c past
// the columns looked at. The best magnitude is carried from column to column. Returns the row, or
// -1 when no column is left.
Index find_pivot(const ColumnTable& m, Index p, double tol, Index& c) {
  double best = 0.0;
  Index row = -1;
  while (best <= tol && c < m.cols) {
    const double* const x = m.column(c++);
    for (Index r = p; r < m.rows; ++r) {
      if (std::fabs(x[r]) > best) {
        best = std::fabs(x[r]);
        row = r;
      }
    }
  }
  return best <= tol ? -1 : row;
}

// Makes column c the unit vector of row p: divides row p by its pivot and takes it, times their
// elements in column c, off the other rows. The columns before c are zero in row p.
void eliminate(const ColumnTable& m, Index p, Index c) {
  double* const factors = m.column(c);
  const double d = 1.0 / factors[p];
  for (Index j = c + 1; j < m.cols; ++j) {
    double* const x = m.column(j);
    x[p] *= d;
    vector_kernels().axpy(p, -x[p], factors, x);
    vector_kernels().axpy(m.rows - p - 1, -x[p], factors + p + 1, x + p + 1);
  }
  std::fill_n(factors, m.rows, 0.0);
  factors[p] = 1.0;
}

// The table becomes its reduced row echelon form. Columns without a pivot stay as the elimination
// leaves them: their negligible elements are not cleared.
//   cost     2 rows^2 cols flops
//   method   Gauss-Jordan elimination with partial pivoting
void rref_core(const ColumnTable& m, double tol) {
  Index c = 0;
  for (Index p = 0; p < m.rows; ++p) {
    const Index row = find_pivot(m, p, tol, c);
    if (row < 0) return;
    if (row != p)
      for (Index j = 0; j < m.cols; ++j) std::swap(m.column(j)[row], m.column(j)[p]);
    eliminate(m, p, c - 1);
  }
}

double tolerance(const aMatrix* a) {
  double tol = std::max(a->rows, a->cols) * kEps;
  double norm;
  if (a->rows == a->cols && normi_real(a, &norm) == nullptr) tol *= norm;
  return tol > kLargestTolerance ? kLargestTolerance : tol;
}

Anyval* rref_worker(EfiCallContext* context, aMatrix* a) {
  const ArgumentFrame frame(context, a);
  if (a->re == nullptr && is_complex(a)) return argument_error(context, 1, kMustBeReal);
  if (a->re == nullptr) return a;
  if ((a->flags & kHoldsNested) != 0) return argument_error(context, 1, kMayNotBeNested);
  // An imaginary array beside a real one is not looked at: kept, hosts rely on it.
  Doubles re = new_part(a->rows, a->cols);
  if (!re) return sError_OutOfMemory;
  const ColumnTable table = {a->rows, a->cols, re.get()};
  for (Index c = 0; c < table.cols; ++c)
    std::copy_n(a->re + c * a->leading_dimension, table.rows, table.column(c));
  rref_core(table, tolerance(a));
  return matrix_result(new_matrix(context, a->rows, a->cols, std::move(re)));
}

}  // namespace

Anyval* rref(EfiCallContext* context, Anyval* a) {
  return contained(context, [=] {
    if (!is_matrix(a)) return argument_error(context, 1, kMustBeArray);
    return rref_worker(context, as_matrix(a));
  });
}

}  // namespace matrix_pack
