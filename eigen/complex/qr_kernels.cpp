#include "eigen/complex/qr_kernels.hpp"

#include "pack/numeric/lanes/complex_lanes.hpp"
#include "pack/numeric/lanes/sweeps.hpp"
#include "pack/numeric/lanes/tiles.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

template <class V>
MATRIX_INLINE void rotate_pair_of_rows(const ComplexRotation& f, ComplexOf<V>& y, ComplexOf<V>& z) {
  const ComplexOf<V> old = y;
  y = add(multiply_conjugate(y, f.x), scaled(z, f.s));
  z = subtract(multiply(z, f.x), scaled(old, f.s));
}

template <class V>
MATRIX_INLINE void rotate_pair_of_columns(const ComplexRotation& f, ComplexOf<V>& y,
                                          ComplexOf<V>& z) {
  const ComplexOf<V> old = y;
  y = add(multiply(y, f.x), scaled(z, f.s));
  z = subtract(multiply_conjugate(z, f.x), scaled(old, f.s));
}

// Rows i-1 and i of one column, both at once. (As sums with signed coefficients: from alternating
// sums and differences gcc 12 would make fused operations, whatever -ffp-contract says.)
MATRIX_INLINE void rotate_two_rows(const ComplexRotation& f, const ComplexView& x) {
  typedef double Two __attribute__((vector_size(16)));
  const Two signed_xi = {f.x.im, -f.x.im};
  const Two signed_s = {f.s, -f.s};
  const auto [r, i] = load<Two>(x, 0);
  const Two other_r = __builtin_shufflevector(r, r, 1, 0);
  const Two other_i = __builtin_shufflevector(i, i, 1, 0);
  store(x.re, r * f.x.re + i * signed_xi + other_r * signed_s);
  store(x.im, i * f.x.re - r * signed_xi + other_i * signed_s);
}

void triangularize(Index first, Index last, Index right, const ComplexView& h,
                   ComplexRotation* rotations) {
  for (Index i = first; i <= last; ++i) {
    const Complex diagonal = h(i - 1, i - 1);
    const double below = h(i, i - 1).re;
    const double norm = scaled_modulus(scaled_modulus(diagonal.re, diagonal.im), below);
    const ComplexRotation f = {{diagonal.re / norm, diagonal.im / norm}, below / norm};
    rotations[i - first] = f;
    h.set(i - 1, i - 1, {norm, 0.0});
    h.column(i - 1).re[i] = 0.0;
    for (Index j = i; j <= right; ++j) rotate_two_rows(f, h.from(i - 1, j));
  }
}

void rotate_rows(const ComplexRotationRun& run, const ComplexView& h, Index begin, Index end) {
  if (run.first > run.last) return;
  const ComplexRotation* const f = run.rotations;
  over_columns<2>(begin, end, [=]<class V, int G>(Index j, Columns<V, G>) MATRIX_INLINE_LAMBDA {
    double* parts[2 * G];
    for (int g = 0; g < G; ++g) {
      const ComplexView column = h.from(run.first - 1, j + g * kLanesOf<V>);
      parts[2 * g] = column.re;
      parts[2 * g + 1] = column.im;
    }
    carry_rows<V, 1>(run.last - run.first + 1, parts, h.ld,
                     [=](Index i, auto& carried, auto& row) MATRIX_INLINE_LAMBDA {
                       for (int g = 0; g < 2 * G; g += 2) {
                         ComplexOf<V> y = {carried[g][0], carried[g + 1][0]};
                         ComplexOf<V> z = {row[g], row[g + 1]};
                         rotate_pair_of_rows(f[i], y, z);
                         row[g] = y.re, row[g + 1] = y.im;
                         carried[g][0] = z.re, carried[g + 1][0] = z.im;
                       }
                     });
  });
}

// Columns i-1 and i of rows begin..end-1.
MATRIX_INLINE void rotate_two_columns(const ComplexRotation& f, const ComplexView& h, Index i,
                                      Index begin, Index end) {
  const ComplexView left = h.column(i - 1);
  const ComplexView right = h.column(i);
  over_elements(begin, end, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    ComplexOf<V> y = load<V>(left, k);
    ComplexOf<V> z = load<V>(right, k);
    rotate_pair_of_columns(f, y, z);
    store(left, k, y);
    store(right, k, z);
  });
}

// Column `column` of rows begin..end-1, times the phase.
MATRIX_INLINE void multiply_by_phase(Complex phase, const ComplexView& h, Index column, Index begin,
                                     Index end) {
  if (phase.im == 0.0) return;
  const ComplexView x = h.column(column);
  over_elements(begin, end, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    store(x, k, multiply(load<V>(x, k), phase));
  });
}

// Rows that go through a run together, in registers.
constexpr int kVectors = 2;
constexpr int kBlock = kVectors * kWidth;

// Rotations from..to-1 on the columns of kBlock rows from `row` on, or on rows that stand
// transposed. The column that two rotations share stays in registers.
template <bool kRows>
void rotate_block(const ComplexRotationRun& run, Index from, Index to, const ComplexView& h,
                  Index row) {
  if (from >= to) return;
  ComplexView column = h.from(row, from - 1);
  ComplexOf<Vector> shared[kVectors];
  for (int b = 0; b < kVectors; ++b) shared[b] = load<Vector>(column, b * kWidth);
  for (Index i = from; i < to; ++i, column = column.column(1)) {
    const ComplexRotation f = run.rotations[i - run.first];
    for (int b = 0; b < kVectors; ++b) {
      ComplexOf<Vector> next = load<Vector>(column.column(1), b * kWidth);
      if constexpr (kRows)
        rotate_pair_of_rows(f, shared[b], next);
      else
        rotate_pair_of_columns(f, shared[b], next);
      store(column, b * kWidth, shared[b]);
      shared[b] = next;
    }
  }
  for (int b = 0; b < kVectors; ++b) store(column, b * kWidth, shared[b]);
}

// By blocks of rows. Row i takes part from rotation i on: first come the rotations at the diagonal,
// of some rows of the block, then the rest of the run, of all of them.
void rotate_columns(const ComplexRotationRun& run, const ComplexView& h, Index begin, Index end) {
  for (Index row = begin; row < end; row += kBlock) {
    const Index row_end = smaller(row + kBlock, end);
    Index i = larger(run.first, row);
    for (; i < row_end && i <= run.last; ++i)
      rotate_two_columns(run.rotations[i - run.first], h, i, row, i + 1);
    if (row + kBlock == row_end)
      rotate_block<false>(run, i, run.last + 1, h, row);
    else
      for (; i <= run.last; ++i)
        rotate_two_columns(run.rotations[i - run.first], h, i, row, row_end);
  }
  multiply_by_phase(run.phase, h, run.last, begin, end);
}

// All runs on kBlock rows from `row` on.
template <bool kRows>
void rotate_block_by_tiles(int count, const ComplexRotationRun* runs, const ComplexView& z,
                           Index row) {
  const auto range = [=](Index k) { return Range{runs[k].first, runs[k].last + 1}; };
  by_tiles(count, 1, range, [=](Index k, Index from, Index to) MATRIX_INLINE_LAMBDA {
    const ComplexRotationRun& run = runs[k];
    rotate_block<kRows>(run, from, to, z, row);
    const Complex phase = {run.phase.re, kRows ? -run.phase.im : run.phase.im};
    if (to > run.last) multiply_by_phase(phase, z, run.last, row, row + kBlock);
  });
}

void rotate_all_columns(int count, const ComplexRotationRun* runs, const ComplexView& z,
                        Index begin, Index end) {
  Index row = begin;
  for (; row + kBlock <= end; row += kBlock) rotate_block_by_tiles<false>(count, runs, z, row);
  for (int k = 0; row < end && k < count; ++k) {
    for (Index i = runs[k].first; i <= runs[k].last; ++i)
      rotate_two_columns(runs[k].rotations[i - runs[k].first], z, i, row, end);
    multiply_by_phase(runs[k].phase, z, runs[k].last, row, end);
  }
}

void rotate_transposed(int count, const ComplexRotationRun* runs, const ComplexView& panel,
                       Index cols) {
  for (Index j = 0; j < cols; j += kBlock) rotate_block_by_tiles<true>(count, runs, panel, j);
}

}  // namespace

const ComplexQrKernels complex_qr_kernels_table = {triangularize, rotate_rows, rotate_columns,
                                                   rotate_all_columns, rotate_transposed};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
