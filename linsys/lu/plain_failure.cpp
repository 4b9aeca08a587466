#include "linsys/lu/plain_failure.hpp"

#include <algorithm>

#include "linsys/lu/plain.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"

namespace matrix_pack {

namespace {

// The elements of one part, rows one behind the other: the plain algorithm goes along rows.
void copy_rows(Index n, const double* part, Index ld, double* rows) {
  for (Index i = 0; i < n; ++i)
    for (Index j = 0; j < n; ++j) *rows++ = part == nullptr ? 0.0 : part[i + j * ld];
}

plain::RealArray rows_of(const aMatrix* m, aMatrix* lu, plain::RealArray) {
  copy_rows(m->rows, m->re, m->leading_dimension, lu->re);
  return {m->rows, lu->re, 1, m->rows};
}
plain::ComplexArray rows_of(const aMatrix* m, aMatrix* lu, plain::ComplexArray) {
  copy_rows(m->rows, m->re, m->leading_dimension, lu->re);
  copy_rows(m->rows, m->im, m->leading_dimension, lu->im);
  return {m->rows, {lu->re, lu->im}, 1, m->rows};
}

template <class Array>
const char* decompose(const Array& rows, double* pivots, bool relative_test) {
  const Doubles scale = new_doubles(rows.n);
  return scale ? plain::decompose(rows, scale.get(), pivots, relative_test) : kOutOfMemory;
}

template <class Array>
const char* factor(const aMatrix* m, aMatrix* lu, double* pivots, bool relative_test) {
  const Array rows = rows_of(m, lu, Array());
  if (const char* message = decompose(rows, pivots, relative_test)) return message;
  for (Index i = 0; i < rows.n; ++i)
    for (Index j = 0; j < i; ++j) {
      const auto lower = rows.get(i, j);
      rows.set(i, j, rows.get(j, i));
      rows.set(j, i, lower);
    }
  return nullptr;
}

void set(double* x, double value) {
  *x = value;
}
void set(const ComplexView& z, double value) {
  z.set(0, {value, 0.0});
}

// Column by column; y is the inverse's first element.
template <class Array, class Element>
const char* invert(const aMatrix* m, aMatrix* lu, double* pivots, bool relative_test, Element y) {
  const Array rows = rows_of(m, lu, Array());
  if (const char* message = decompose(rows, pivots, relative_test)) return message;
  for (Index j = 0; j < rows.n; ++j) {
    const Element column = y + j * rows.n;
    for (Index i = 0; i < rows.n; ++i) set(column + i, i == j ? 1.0 : 0.0);
    plain::substitute(rows, pivots, Array{rows.n, column});
  }
  return nullptr;
}

}  // namespace

const char* factor_plainly(const aMatrix* m, aMatrix* lu, bool complex, double* pivots,
                           bool relative_test) {
  if (!complex) return factor<plain::RealArray>(m, lu, pivots, relative_test);
  const char* const message = factor<plain::ComplexArray>(m, lu, pivots, relative_test);
  for (Index k = 0; k < m->rows; ++k) pivots[k] += 1.0;
  return message;
}

const char* invert_plainly(const aMatrix* m, aMatrix* lu, bool complex, double* pivots,
                           bool relative_test, double* re, double* im) {
  if (!complex) return invert<plain::RealArray>(m, lu, pivots, relative_test, re);
  return invert<plain::ComplexArray>(m, lu, pivots, relative_test, ComplexView{re, im});
}

}  // namespace matrix_pack
