#include "svd/accumulate.hpp"

#include <algorithm>

#include "pack/numeric/reflection_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// Reflections that pass together over the columns: their vectors stay in the second cache.
constexpr Index kReflections = 32;

// Columns that a reflection takes at a time: they stay in the first cache.
constexpr Index kColumns = 4;

// Forms columns first...end - 1. In plain order the steps i run down from the last: step i reflects
// all columns beyond i by its vector (`reflect`), then makes that vector column i (`finish`). For a
// column j alone this means: it is finished, then reflected by the vectors j - 1, j - 2... So the
// right half is formed first, then reflected by all vectors of the left half, block by block.
template <class Finish, class Reflect>
void accumulate(Index first, Index end, const Finish& finish, const Reflect& reflect) {
  if (end - first < 2) {
    if (first < end) finish(first);
    return;
  }
  const Index middle = first + (end - first + 1) / 2;
  accumulate(middle, end, finish, reflect);
  for (Index i1 = middle; i1 > first; i1 -= kReflections)
    for (Index j = middle; j < end; j += kColumns)
      for (Index i = i1 - 1; i >= std::max(first, i1 - kReflections); --i)
        reflect(i, j, std::min(kColumns, end - j));
  accumulate(first, middle, finish, reflect);
}

}  // namespace

void accumulate_right(const Bidiagonal& b, const double* rows, double* v) {
  const Index n = b.n;
  // Until column i is formed, it holds (x / x[0]) / g, x the vector of step i. (The product of the
  // divisors might underflow.)
  for (Index i = 0; i + 1 < n; ++i) {
    if (b.rv1[i + 1] == 0.0) continue;
    const Index count = n - i - 1;
    const double* const x = rows + i * n + i + 1;
    double* const column = v + i * n + i + 1;
    std::copy_n(x, count, column);
    vector_kernels().divide(count, x[0], column);
    vector_kernels().divide(count, b.rv1[i + 1], column);
  }
  const auto finish = [&](Index j) {
    std::fill_n(v + j * n, n, 0.0);
    v[j * n + j] = 1.0;
  };
  const auto reflect = [&](Index i, Index j, Index columns) {
    if (b.rv1[i + 1] == 0.0) return;
    const Index vector = i * n + i + 1;
    reflection_kernels().reflect_columns(0, n - i - 1, columns, {v + j * n + i + 1, n},
                                         rows + vector, v + vector, 1.0, 1.0);
  };
  accumulate(0, n, finish, reflect);
}

void accumulate_left(const Bidiagonal& b) {
  const auto finish = [&](Index j) {
    double* const column = b.a + j * b.ld;
    std::fill_n(column, j, 0.0);
    if (b.w[j] != 0.0)
      vector_kernels().divide(b.m - j, b.w[j], column + j);
    else
      std::fill_n(column + j, b.m - j, 0.0);
    column[j] += 1.0;
  };
  const auto reflect = [&](Index i, Index j, Index columns) {
    if (b.w[i] == 0.0) return;
    const double* const u = b.a + i * b.ld + i;
    reflection_kernels().reflect_columns(1, b.m - i, columns, {b.a + j * b.ld + i, b.ld}, u + 1, u,
                                         u[0], b.w[i]);
  };
  accumulate(0, b.n, finish, reflect);
}

}  // namespace matrix_pack
