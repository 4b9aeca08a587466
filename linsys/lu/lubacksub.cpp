#include "linsys/lu/lubacksub.hpp"

#include <utility>

#include "linsys/lu/complex_matrix.hpp"
#include "linsys/lu/substitution_kernels.hpp"
#include "pack/numeric/complex_arithmetic.hpp"

namespace matrix_pack {

namespace {

// Makes the row exchanges of the factorization, counted from `origin`.
void exchange(Index n, const double* pivots, double origin, double* b) {
  for (Index i = 0; i < n; ++i) std::swap(b[i], b[static_cast<Index>(pivots[i] - origin)]);
}

}  // namespace

const char* lubacksub(const aMatrix* lu, const double* pivots, aMatrix* b) {
  if (lu == nullptr || lu->re == nullptr || pivots == nullptr || b == nullptr || b->re == nullptr)
    return "Unknown error";
  if (lu->rows < 1 || lu->cols < 1 || b->rows < 1) return "invalid dimension";
  if (lu->rows != lu->cols) return "must be square";
  const Index n = lu->rows;
  double* const x = b->re;
  exchange(n, pivots, 0.0, x);
  Index first = 0;
  while (first < n && x[first] == 0.0) ++first;
  const SubstitutionKernels& kernels = substitution_kernels();
  kernels.forward(n - first, lu->re + (first + first * n), n, x + first);
  kernels.backward(n, lu->re, n, x);
  return nullptr;
}

const char* clubacksub(aMatrix* lu, const double* pivots, aMatrix* b) {
  if (lu->rows < 1 || lu->cols < 1 || b->rows < 1) return "invalid dimension";
  if (lu->rows != lu->cols) return "must be square";
  const Index n = lu->rows;
  if (b->rows != n) return "array size mismatch";
  const bool had_re = b->re != nullptr;
  const bool had_im = b->im != nullptr;
  if (!complete_parts(lu) || !complete_parts(b)) return "out of memory";
  const Split a = split(lu);
  const Split x = split(b);
  for (Index i = 0; i < n; ++i)
    if (a.re[i + i * n] == 0.0 && a.im[i + i * n] == 0.0) return "singular matrix";
  exchange(n, pivots, 1.0, x.re);
  exchange(n, pivots, 1.0, x.im);
  Index first = 0;
  while (first < n && x.re[first] == 0.0 && x.im[first] == 0.0) ++first;
  const ComplexSubstitutionKernels& kernels = complex_substitution_kernels();
  kernels.forward(n - first, a + (first + first * n), n, x + first);
  kernels.backward(n, a, n, x);
  if (!had_re) drop_zeros(b, &b->re);
  if (!had_im) drop_zeros(b, &b->im);
  return nullptr;
}

}  // namespace matrix_pack
