#include "linsys/lu/lu_kernels.hpp"

#include "linsys/lu/pivot_search.hpp"
#include "pack/numeric/lanes/column_products.hpp"
#include "pack/numeric/lanes/runs.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Largest magnitude in a row of n elements; faults where a NaN is compared.
double largest_in_row(Index n, ConstRealView row) {
  double largest = 0.0;
  for (Index j = 0; j < n; ++j) {
    const double t = __builtin_fabs(row(0, j));
    largest = t > largest ? t : largest;
  }
  return largest;
}

Pivoting scale_rows(Index n, ConstRealView a, double* scale) {
  with_runs(n, [=]<class R>(R) {
    map_runs<R>(n, scale, [=](Index i) {
      R largest = {};
      for (Index j = 0; j < n; ++j)
        largest = larger_bits(largest, magnitudes(load<R>(a.column(j) + i)));
      return largest;
    });
  });
  for (Index i = 0; i < n; ++i) {
    if (__builtin_isnan(scale[i])) scale[i] = largest_in_row(n, a.from(i, 0));
    if (scale[i] == 0.0) return Pivoting::zero_pivot;
    scale[i] = 1.0 / scale[i];
  }
  return Pivoting::done;
}

// Divides by the pivot; the largest quotient in magnitude, at least 1.
MATRIX_INLINE double divide_by_pivot(Index n, double* x, double pivot) {
  double growth = 1.0;
  with_runs(n, [&]<class R>(R) {
    R largest = {};
    map_runs<R>(n, x, [&](Index i) {
      const R l = quotient(load<R>(x + i), pivot);
      largest = larger(largest, magnitudes(l));
      return l;
    });
    const double t = largest_of(largest);
    growth = t > growth ? t : growth;
  });
  return growth;
}

// Largest magnitude in a row of n elements, n >= 1, times the factor.
MATRIX_INLINE double row_bound(Index n, ConstRealView row, double factor) {
  double bound = 0.0;
  for (Index j = 0; j < n; ++j) {
    const double t = __builtin_fabs(row(0, j)) * factor;
    bound = t > bound ? t : bound;
  }
  return bound;
}

Elimination eliminate(Index n, RealView a, Index k0, Index k1, double* scale, double* pivots,
                      PivotTest* test) {
  for (Index k = k0; k < k1; ++k) {
    double* const column = a.column(k);
    const double weight = __builtin_fabs(column[k]) * scale[k];
    const Index m =
        heaviest<kRealTie>({weight, k}, k + 1, n - k - 1, column + k + 1, scale + k + 1).row;
    if (m != k) {
      exchange_rows(k1 - k0, a.from(0, k0), m, k);
      scale[m] = scale[k];
    }
    pivots[k] = static_cast<double>(m);
    const double pivot = column[k];
    if (pivot == 0.0) return {k - k0, Pivoting::zero_pivot};
    if (test != nullptr) {
      if (k > 0) take_row(*test, row_bound(n - k + 1, a.from(k - 1, k - 1), scale[k - 1]));
      if (!passes(*test, __builtin_fabs(pivot))) return {k - k0, Pivoting::zero_pivot};
    }
    // rows below := rows below - multipliers * row k
    const Index below = n - k - 1;
    scale[k] = divide_by_pivot(below, column + k + 1, pivot);
    subtract_rank_one(below, k1 - k - 1, column + k + 1, a.from(k, k + 1), a.from(k + 1, k + 1));
  }
  return {k1 - k0, Pivoting::done};
}

void row_bounds(Index n, ConstRealView a, Index k0, Index k1, const double* scale, double* bounds) {
  for (Index i = k0; i < k1; ++i) bounds[i - k0] = 0.0;
  for (Index j = k0; j < n; ++j) {
    const double* const column = a.column(j) + k0;
    const Index rows = (j < k1 ? j + 1 : k1) - k0;
    with_runs(rows, [=]<class R>(R) {
      map_runs<R>(rows, bounds, [=](Index i) {
        R t = magnitudes(load<R>(column + i));
        const R factor = load<R>(scale + k0 + i);
        for (int v = 0; v < R::kVectors; ++v) t.part[v] *= factor.part[v];
        return larger(load<R>(bounds + i), t);
      });
    });
  }
}

void exchange_pivot_rows(Index cols, RealView a, Index k0, Index k1, const double* pivots) {
  by_fours(0, cols, [=]<int K>(Index j, Group<K>) MATRIX_INLINE_LAMBDA {
    for (Index k = k0; k < k1; ++k) {
      double* const x = &a(k, j);
      double* const y = &a(static_cast<Index>(pivots[k]), j);
      for (int c = 0; c < K; ++c) {
        const double t = x[c * a.ld];
        x[c * a.ld] = y[c * a.ld];
        y[c * a.ld] = t;
      }
    }
  });
}

}  // namespace

const LuKernels lu_kernels_table = {scale_rows, eliminate, row_bounds, exchange_pivot_rows};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
