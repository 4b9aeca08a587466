#include "svd/accumulate.hpp"

#include <algorithm>

#include "pack/numeric/reflection_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// Reflections that pass together over the columns: their vectors stay in the second cache.
constexpr Index kReflections = 32;

// Columns that go through them together: they stay in the first cache, or near it.
constexpr Index kColumns = 4;

// How many of the columns make the right half: whole groups, since a column alone waits for its
// sums.
Index right_half(Index columns) {
  const Index half = columns / 2;
  return columns <= kColumns ? half : (half + kColumns - 1) / kColumns * kColumns;
}

// Forms columns first...end - 1 of an array. In plain order the steps i run down from the last:
// step i reflects all columns beyond i by its vector (`reflection(i)`, unless !reflects(i)), then
// makes that vector column i (`finish`). For a column j alone this means: it is finished, then
// reflected by the vectors j - 1, j - 2... So the right half is formed first, then reflected by all
// vectors of the left half, block by block.
template <class Finish, class Reflects, class ReflectionOf>
void accumulate(Index rows, RealView a, Index first, Index end, const Finish& finish,
                const Reflects& reflects, const ReflectionOf& reflection) {
  if (end - first < 2) {
    if (first < end) finish(first);
    return;
  }
  const Index middle = end - right_half(end - first);
  accumulate(rows, a, middle, end, finish, reflects, reflection);
  for (Index i1 = middle; i1 > first; i1 -= kReflections) {
    ColumnReflection block[kReflections];
    Index count = 0;
    for (Index i = i1 - 1; i >= std::max(first, i1 - kReflections); --i)
      if (reflects(i)) block[count++] = reflection(i);
    for (Index j = middle; j < end && count > 0; j += kColumns)
      reflection_kernels().reflect_columns(rows, std::min(kColumns, end - j), a.from(0, j), block,
                                           count);
  }
  accumulate(rows, a, first, middle, finish, reflects, reflection);
}

}  // namespace

void accumulate_right(const Bidiagonal& b, ConstRealView vectors, RealView v) {
  const Index n = b.n;
  // Until column i is formed, it holds (x / x[0]) / g, x the vector of step i. (The product of the
  // divisors might underflow.)
  for (Index i = 0; i + 1 < n; ++i) {
    if (b.rv1[i + 1] == 0.0) continue;
    const Index count = n - i - 1;
    const double* const x = &vectors(i + 1, i);
    double* const column = &v(i + 1, i);
    std::copy_n(x, count, column);
    vector_kernels().divide(count, x[0], column);
    vector_kernels().divide(count, b.rv1[i + 1], column);
  }
  const auto finish = [&](Index j) {
    std::fill_n(v.column(j), n, 0.0);
    v(j, j) = 1.0;
  };
  const auto reflects = [&](Index i) { return b.rv1[i + 1] != 0.0; };
  const auto reflection = [&](Index i) -> ColumnReflection {
    return {i + 1, &vectors(i + 1, i), i + 1, &v(i + 1, i), 1.0, 1.0};
  };
  accumulate(n, v, 0, n, finish, reflects, reflection);
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
  const auto reflects = [&](Index i) { return b.w[i] != 0.0; };
  const auto reflection = [&](Index i) -> ColumnReflection {
    const double* const u = b.a + i * b.ld + i;
    return {i + 1, u + 1, i, u, u[0], b.w[i]};
  };
  accumulate(b.m, {b.a, b.ld}, 0, b.n, finish, reflects, reflection);
}

}  // namespace matrix_pack
