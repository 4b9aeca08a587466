#include "linsys/lu/lubacksub.hpp"

#include <algorithm>
#include <utility>

#include "linsys/lu/substitution_kernels.hpp"
#include "pack/checks.hpp"
#include "pack/matrix_views.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"

namespace matrix_pack {

namespace {

// Makes the row exchanges of the factorization, counted from `origin`.
void exchange(Index n, const double* pivots, double origin, double* b) {
  for (Index i = 0; i < n; ++i) std::swap(b[i], b[static_cast<Index>(pivots[i] - origin)]);
}

// Removes the part array when all its elements are zero.
void drop_zeros(aMatrix* m, double* aMatrix::*part) {
  double* const x = m->*part;
  const auto is_nonzero = [](double element) { return element != 0.0; };
  if (std::any_of(x, x + Index{m->rows} * m->cols, is_nonzero)) return;
  ::operator delete(x);
  m->*part = nullptr;
}

}  // namespace

const char* lubacksub(const aMatrix* lu, const double* pivots, aMatrix* b) {
  if (lu == nullptr || lu->re == nullptr || pivots == nullptr || b == nullptr || b->re == nullptr)
    return kUnknownError;
  if (b->rows < 1) return kInvalidDimension;
  if (const char* message = check_square(lu)) return message;
  const Index n = lu->rows;
  double* const x = b->re;
  exchange(n, pivots, 0.0, x);
  Index first = 0;
  while (first < n && x[first] == 0.0) ++first;
  const SubstitutionKernels& kernels = substitution_kernels();
  const ConstRealView a = real_view(lu);
  kernels.forward(n - first, a.from(first, first), x + first);
  kernels.backward(n, a, x);
  return nullptr;
}

const char* clubacksub(aMatrix* lu, const double* pivots, aMatrix* b) {
  if (b->rows < 1) return kInvalidDimension;
  if (const char* message = check_square(lu)) return message;
  const Index n = lu->rows;
  if (b->rows != n) return kSizeMismatch;
  const bool had_re = b->re != nullptr;
  const bool had_im = b->im != nullptr;
  if (!provide_parts(lu) || !provide_parts(b)) return kOutOfMemory;
  const ComplexView a = complex_view(lu);
  const ComplexView x = complex_view(b);
  for (Index i = 0; i < n; ++i)
    if (is_zero(a(i, i))) return kSingularMatrix;
  exchange(n, pivots, 1.0, x.re);
  exchange(n, pivots, 1.0, x.im);
  Index first = 0;
  while (first < n && is_zero(x[first])) ++first;
  const ComplexSubstitutionKernels& kernels = complex_substitution_kernels();
  kernels.forward(n - first, a.from(first, first), x + first);
  kernels.backward(n, a, x);
  if (!had_re) drop_zeros(b, &aMatrix::re);
  if (!had_im) drop_zeros(b, &aMatrix::im);
  return nullptr;
}

}  // namespace matrix_pack
