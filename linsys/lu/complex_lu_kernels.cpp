#include "linsys/lu/complex_lu_kernels.hpp"

#include "linsys/lu/pivot_search.hpp"
#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/lanes/quotients.hpp"
#include "pack/numeric/lanes/runs.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Moduli are computed for this many elements of a column at a time.
constexpr Index kChunk = 64;

Index chunk_at(Index i, Index n) {
  return n - i < kChunk ? n - i : kChunk;
}

// Stands for a modulus out of range; none is negative.
constexpr double kOutOfRange = -1.0;

// Parts below this have squares that do not overflow, and a modulus in range.
constexpr double kSafePart = 1e150;

// Whether the modulus of every element is computed without a fault.
bool parts_are_safe(Index rows, Index cols, const ConstComplexView& a) {
  bool safe = true;
  with_runs(rows, [=, &safe]<class R>(R) {
    R largest = {};
    const auto take = [=, &largest](const ConstComplexView& x) {
      const ComplexOf<R> run = load<R>(x);
      largest = larger_bits(larger_bits(largest, magnitudes(run.re)), magnitudes(run.im));
    };
    for (Index j = 0; j < cols; ++j) {
      for (Index i = 0; i + R::kHeight < rows; i += R::kHeight) take(a.from(i, j));
      take(a.from(rows - R::kHeight, j));
    }
    double lanes[R::kHeight];
    store(lanes, largest);
    for (const double lane : lanes) safe = safe && __builtin_isless(lane, kSafePart);
  });
  return safe;
}

// Of so few elements the moduli are computed one by one.
constexpr Index kFew = 4;

// Sets out[i] to the modulus of element i, by the rules of cmodulus, or to kOutOfRange; true when
// all are in range.
bool moduli(Index n, const ConstComplexView& x, double* __restrict out) {
  if (n > kFew && parts_are_safe(n, 1, x)) {
    for (Index i = 0; i < n; ++i) {
      const double re = __builtin_fabs(x.re[i]);
      const double im = __builtin_fabs(x.im[i]);
      const double modulus = __builtin_sqrt(re * re + im * im);
      const double unless_im_is_zero = im == 0.0 ? re : modulus;
      out[i] = re == 0.0 ? im : unless_im_is_zero;
    }
    return true;
  }
  bool in_range = true;
  for (Index i = 0; i < n; ++i) {
    if (!modulus_in_range(x[i], out + i)) {
      out[i] = kOutOfRange;
      in_range = false;
    }
  }
  return in_range;
}

// Bounds that grow: a NaN marks one that an element out of range belongs to. It stays, since
// nothing is larger than a NaN.
constexpr double kMarked = __builtin_nan("");

bool is_marked(double bound) {
  return bound != bound;
}

// y[i] = modulus i, times factor[i] if there are factors, where that is larger.
void raise_to_moduli(Index n, const ConstComplexView& x, const double* factor,
                     double* __restrict y) {
  double t[kChunk];
  for (Index i = 0; i < n; i += kChunk) {
    const Index count = chunk_at(i, n);
    moduli(count, x + i, t);
    for (Index q = 0; q < count; ++q) {
      const double weight = factor == nullptr ? t[q] : t[q] * factor[i + q];
      const double raised = weight > y[i + q] ? weight : y[i + q];
      y[i + q] = t[q] == kOutOfRange ? kMarked : raised;
    }
  }
}

// Largest modulus in a row of n elements times the factor; marked when one is out of range.
double row_bound(Index n, const ConstComplexView& row, double factor) {
  double bound = 0.0;
  for (Index j = 0; j < n; ++j) {
    double modulus;
    if (!modulus_in_range(row(0, j), &modulus)) return kMarked;
    bound = modulus * factor > bound ? modulus * factor : bound;
  }
  return bound;
}

// Not by the moduli: squares underflow.
bool row_is_zero(Index n, const ConstComplexView& row) {
  for (Index j = 0; j < n; ++j)
    if (!is_zero(row(0, j))) return false;
  return true;
}

Pivoting scale_rows(Index n, const ConstComplexView& a, double* scale) {
  const bool safe = n > kFew && parts_are_safe(n, n, a);
  for (Index i = 0; i < n; ++i) scale[i] = 0.0;
  for (Index j = 0; j < n && safe; ++j) raise_to_moduli(n, a.column(j), nullptr, scale);
  for (Index i = 0; i < n; ++i) {
    if (!safe) scale[i] = row_bound(n, a.from(i, 0), 1.0);
    if (is_marked(scale[i])) return Pivoting::modulus_overflow;
    if (scale[i] == 0.0 && row_is_zero(n, a.from(i, 0))) return Pivoting::zero_pivot;
    scale[i] = 1.0 / scale[i];
  }
  return Pivoting::done;
}

// The row of the heaviest of the candidates k to n - 1, k when all are NaN; -1 when a modulus is
// out of range.
Index find_pivot(Index k, Index n, const ConstComplexView& column, const double* scale) {
  Candidate best = {-1.0, k};
  double t[kChunk];
  for (Index i = k; i < n; i += kChunk) {
    const Index count = chunk_at(i, n);
    if (!moduli(count, column + i, t)) return -1;
    best = heaviest<kComplexTie>(best, i, count, t, scale + i);
  }
  return best.row;
}

MATRIX_INLINE void divide_by_pivot(Index n, const ComplexView& x, Complex pivot) {
  const Divisor d = divisor(pivot);
  over_elements(0, n, [=]<class V>(Index i, V) MATRIX_INLINE_LAMBDA {
    const auto y = quotient(load<V>(x.re + i), load<V>(x.im + i), d);
    store(x.re + i, y.re);
    store(x.im + i, y.im);
  });
}

// The largest modulus, at least 1; marked when one is out of range.
double growth_bound(Index n, const ConstComplexView& x) {
  double growth = 1.0;
  double t[kChunk];
  for (Index i = 0; i < n; i += kChunk) {
    const Index count = chunk_at(i, n);
    if (!moduli(count, x + i, t)) return kMarked;
    for (Index q = 0; q < count; ++q) growth = t[q] > growth ? t[q] : growth;
  }
  return growth;
}

// Divides n elements by the pivot, and takes their multiples off the rows that begin beside them:
// those of the row above, which has `cols` elements.
MATRIX_INLINE void step_by_elements(Index n, Index cols, const ComplexView& x, Complex pivot,
                                    const ComplexView& row) {
  const Divisor d = divisor(pivot);
  for (Index i = 0; i < n; ++i) {
    const Complex l = quotient(x.re[i], x.im[i], d);
    x.set(i, l);
    for (Index j = 0; j < cols; ++j)
      row.set(i + 1, j, subtract(row(i + 1, j), multiply(l, row(0, j))));
  }
}

// Whether all parts of a row are.
bool row_is_safe(Index n, const ConstComplexView& row) {
  bool safe = true;
  for (Index j = 0; j < n; ++j) {
    const Complex z = row(0, j);
    safe &= __builtin_isless(__builtin_fabs(z.re), kSafePart) &
            __builtin_isless(__builtin_fabs(z.im), kSafePart);
  }
  return safe;
}

// Tests pivot k, the bound of the row above it taken in. While the test is off nobody asks for the
// growth: the bounds of safe parts, which come without a fault, are left out.
Pivoting test_pivot(Index n, const ConstComplexView& a, Index k, double* scale, PivotTest& test) {
  const ConstComplexView row = a.from(k - 1, k - 1);
  if (k > 0 && (test.on || !row_is_safe(n - k + 1, row))) {
    if (!test.on) scale[k - 1] = growth_bound(n - k, a.column(k - 1) + k);
    const double bound = row_bound(n - k + 1, row, scale[k - 1]);
    if (is_marked(bound)) return Pivoting::modulus_overflow;
    take_row(test, bound);
  }
  double modulus;
  if (!modulus_in_range(a(k, k), &modulus)) return Pivoting::modulus_overflow;
  return passes(test, modulus) ? Pivoting::done : Pivoting::zero_pivot;
}

Elimination eliminate(Index n, const ComplexView& a, Index k0, Index k1, double* scale,
                      double* pivots, PivotTest* test) {
  for (Index k = k0; k < k1; ++k) {
    const ComplexView column = a.column(k);
    const Index m = find_pivot(k, n, column, scale);
    if (m < 0) return {k - k0, Pivoting::modulus_overflow};
    if (m != k) {
      exchange_rows(k1 - k0, a.from(0, k0), m, k);
      scale[m] = scale[k];
    }
    pivots[k] = static_cast<double>(m);
    const Complex pivot = column[k];
    if (is_zero(pivot)) return {k - k0, Pivoting::zero_pivot};
    if (test != nullptr) {
      const Pivoting tested = test_pivot(n, a, k, scale, *test);
      if (tested != Pivoting::done) return {k - k0, tested};
    }
    // rows below := rows below - multipliers * row k
    const Index below = n - k - 1;
    const ComplexView multipliers = column + (k + 1);
    const ComplexView row = a.from(k, k + 1);
    if (n <= kFew) {
      step_by_elements(below, k1 - k - 1, multipliers, pivot, row);
    } else {
      divide_by_pivot(below, multipliers, pivot);
      subtract_rank_one(below, k1 - k - 1, multipliers, row, a.from(k + 1, k + 1));
    }
    const bool left_out = test != nullptr && !test->on && parts_are_safe(below, 1, multipliers);
    scale[k] = left_out ? 1.0 : growth_bound(below, multipliers);
    if (is_marked(scale[k])) return {k + 1 - k0, Pivoting::modulus_overflow};
  }
  return {k1 - k0, Pivoting::done};
}

void row_bounds(Index n, const ConstComplexView& a, Index k0, Index k1, const double* scale,
                double* bounds) {
  for (Index i = k0; i < k1; ++i) bounds[i - k0] = 0.0;
  for (Index j = k0; j < n; ++j) {
    const Index rows = (j < k1 ? j + 1 : k1) - k0;
    raise_to_moduli(rows, a.from(k0, j), scale + k0, bounds);
  }
}

}  // namespace

const ComplexLuKernels complex_lu_kernels_table = {scale_rows, eliminate, row_bounds};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
