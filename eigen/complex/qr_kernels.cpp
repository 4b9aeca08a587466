#include "eigen/complex/qr_kernels.hpp"

#include "eigen/shared/complex_roots.hpp"
#include "pack/numeric/lanes.hpp"
#include "pack/numeric/tiles.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Two complex numbers, or two vectors of them.
template <class V>
struct Pair {
  V yr, yi, zr, zi;
};

template <class V>
MATRIX_LANES_INLINE void turn_rows(const ComplexRotation& f, Pair<V>& p) {
  const V yr = p.yr, yi = p.yi, zr = p.zr, zi = p.zi;
  p.yr = yr * f.xr + yi * f.xi + zr * f.s;
  p.yi = yi * f.xr - yr * f.xi + zi * f.s;
  p.zr = zr * f.xr - zi * f.xi - yr * f.s;
  p.zi = zi * f.xr + zr * f.xi - yi * f.s;
}

template <class V>
MATRIX_LANES_INLINE void turn_columns(const ComplexRotation& f, Pair<V>& p) {
  const V yr = p.yr, yi = p.yi, zr = p.zr, zi = p.zi;
  p.yr = yr * f.xr - yi * f.xi + zr * f.s;
  p.yi = yi * f.xr + yr * f.xi + zi * f.s;
  p.zr = zr * f.xr + zi * f.xi - yr * f.s;
  p.zi = zi * f.xr - zr * f.xi - yi * f.s;
}

// Rows i-1 and i of one column, both at once. (As sums with signed coefficients: from alternating
// sums and differences gcc 12 would make fused operations, whatever -ffp-contract says.)
MATRIX_LANES_INLINE void turn_rows_at(const ComplexRotation& f, double* re, double* im) {
  typedef double Two __attribute__((vector_size(16)));
  const Two signed_xi = {f.xi, -f.xi};
  const Two signed_s = {f.s, -f.s};
  const Two r = load<Two>(re);
  const Two i = load<Two>(im);
  const Two other_r = __builtin_shufflevector(r, r, 1, 0);
  const Two other_i = __builtin_shufflevector(i, i, 1, 0);
  store(re, r * f.xr + i * signed_xi + other_r * signed_s);
  store(im, i * f.xr - r * signed_xi + other_i * signed_s);
}

void triangularize(std::ptrdiff_t first, std::ptrdiff_t last, std::ptrdiff_t right,
                   const ComplexArray& h, ComplexRotation* rotations) {
  for (std::ptrdiff_t i = first; i <= last; ++i) {
    const std::ptrdiff_t at = (i - 1) * h.ld + i - 1;
    const double below = h.re[at + 1];
    const double norm = scaled_modulus(scaled_modulus(h.re[at], h.im[at]), below);
    const ComplexRotation f = {h.re[at] / norm, h.im[at] / norm, below / norm};
    rotations[i - first] = f;
    h.re[at] = norm;
    h.im[at] = 0.0;
    h.re[at + 1] = 0.0;
    for (std::ptrdiff_t j = i; j <= right; ++j)
      turn_rows_at(f, h.re + j * h.ld + i - 1, h.im + j * h.ld + i - 1);
  }
}

// Rotation f on the row carried and the next one: hands back the row that is done.
template <class V>
MATRIX_LANES_INLINE void advance(const ComplexRotation& f, V& carried_re, V& carried_im, V& re,
                                 V& im) {
  Pair<V> p = {carried_re, carried_im, re, im};
  turn_rows(f, p);
  re = p.yr;
  im = p.yi;
  carried_re = p.zr;
  carried_im = p.zi;
}

// A run on the rows of G vectors of columns side by side: none waits for another. The row that two
// rotations share stays in registers.
template <class V, int G>
MATRIX_LANES_INLINE void rotate_rows_of(const ComplexRotationRun& run, std::ptrdiff_t ld,
                                        double* re, double* im) {
  constexpr int kHere = kLanesOf<V>;
  const std::ptrdiff_t step = kHere * ld;
  const ComplexRotation* f = run.rotations;
  V carried_re[G], carried_im[G];
  for (int g = 0; g < G; ++g) {
    carried_re[g] = load_row<V>(re + run.first - 1 + g * step, ld);
    carried_im[g] = load_row<V>(im + run.first - 1 + g * step, ld);
  }
  std::ptrdiff_t i = run.first;
  for (; i + kHere <= run.last + 1; i += kHere, f += kHere) {
    Tile<V> tile_re[G], tile_im[G];
    for (int g = 0; g < G; ++g) {
      tile_re[g] = load_tile<V>(re + i + g * step, ld);
      tile_im[g] = load_tile<V>(im + i + g * step, ld);
    }
    for (int m = 0; m < kHere; ++m)
      for (int g = 0; g < G; ++g)
        advance(f[m], carried_re[g], carried_im[g], tile_re[g].row[m], tile_im[g].row[m]);
    for (int g = 0; g < G; ++g) {
      store_tile(re + i - 1 + g * step, ld, tile_re[g]);
      store_tile(im + i - 1 + g * step, ld, tile_im[g]);
    }
  }
  for (; i <= run.last; ++i, ++f) {
    for (int g = 0; g < G; ++g) {
      V row_re = load_row<V>(re + i + g * step, ld);
      V row_im = load_row<V>(im + i + g * step, ld);
      advance(*f, carried_re[g], carried_im[g], row_re, row_im);
      store_row(re + i - 1 + g * step, ld, row_re);
      store_row(im + i - 1 + g * step, ld, row_im);
    }
  }
  for (int g = 0; g < G; ++g) {
    store_row(re + run.last + g * step, ld, carried_re[g]);
    store_row(im + run.last + g * step, ld, carried_im[g]);
  }
}

void rotate_rows(const ComplexRotationRun& run, const ComplexArray& h, std::ptrdiff_t begin,
                 std::ptrdiff_t end) {
  if (run.first > run.last) return;
  constexpr int kGroups = 2;
  const auto column = [&](double* part, std::ptrdiff_t j) { return part + j * h.ld; };
  std::ptrdiff_t j = begin;
  for (; j + kGroups * kSide <= end; j += kGroups * kSide)
    rotate_rows_of<Row, kGroups>(run, h.ld, column(h.re, j), column(h.im, j));
  for (; j + kSide <= end; j += kSide)
    rotate_rows_of<Row, 1>(run, h.ld, column(h.re, j), column(h.im, j));
  for (; j < end; ++j) rotate_rows_of<double, 1>(run, h.ld, column(h.re, j), column(h.im, j));
}

// Columns i-1 and i of rows begin..end-1.
MATRIX_LANES_INLINE void turn_columns_at(const ComplexRotation& f, const ComplexArray& h,
                                         std::ptrdiff_t i, std::ptrdiff_t begin,
                                         std::ptrdiff_t end) {
  double* const yr = h.re + (i - 1) * h.ld;
  double* const yi = h.im + (i - 1) * h.ld;
  double* const zr = yr + h.ld;
  double* const zi = yi + h.ld;
  over_elements(begin, end, [=](std::ptrdiff_t k, auto v) {
    using V = decltype(v);
    Pair<V> p = {load<V>(yr + k), load<V>(yi + k), load<V>(zr + k), load<V>(zi + k)};
    turn_columns(f, p);
    store(yr + k, p.yr);
    store(yi + k, p.yi);
    store(zr + k, p.zr);
    store(zi + k, p.zi);
  });
}

// Column j of rows begin..end-1, times the phase.
MATRIX_LANES_INLINE void turn_phase(const ComplexRotationRun& run, const ComplexArray& h,
                                    std::ptrdiff_t begin, std::ptrdiff_t end) {
  const double a = run.phase_re;
  const double b = run.phase_im;
  if (b == 0.0) return;
  double* const re = h.re + run.last * h.ld;
  double* const im = h.im + run.last * h.ld;
  over_elements(begin, end, [=](std::ptrdiff_t k, auto v) {
    using V = decltype(v);
    const V x = load<V>(re + k), y = load<V>(im + k);
    store(re + k, x * a - y * b);
    store(im + k, y * a + x * b);
  });
}

// Rows that go through a run together, in registers.
constexpr int kVectors = 2;
constexpr int kBlock = kVectors * kWidth;

// Rotations from..run.last on kBlock rows from `row` on. The column that two rotations share stays
// in registers.
void rotate_block(const ComplexRotationRun& run, std::ptrdiff_t from, const ComplexArray& h,
                  std::ptrdiff_t row) {
  if (from > run.last) return;
  double* re = h.re + (from - 1) * h.ld + row;
  double* im = h.im + (from - 1) * h.ld + row;
  Pair<Vector> p[kVectors];
  for (int b = 0; b < kVectors; ++b) {
    p[b].zr = load_vector(re + b * kWidth);
    p[b].zi = load_vector(im + b * kWidth);
  }
  for (std::ptrdiff_t i = from; i <= run.last; ++i, re += h.ld, im += h.ld) {
    const ComplexRotation f = run.rotations[i - run.first];
    for (int b = 0; b < kVectors; ++b) {
      p[b].yr = p[b].zr;
      p[b].yi = p[b].zi;
      p[b].zr = load_vector(re + h.ld + b * kWidth);
      p[b].zi = load_vector(im + h.ld + b * kWidth);
      turn_columns(f, p[b]);
      store_vector(re + b * kWidth, p[b].yr);
      store_vector(im + b * kWidth, p[b].yi);
    }
  }
  for (int b = 0; b < kVectors; ++b) {
    store_vector(re + b * kWidth, p[b].zr);
    store_vector(im + b * kWidth, p[b].zi);
  }
}

// The rows from begin on: those of the triangle's edge, rotation by rotation, then all of them.
void rotate_columns(const ComplexRotationRun& run, const ComplexArray& h, std::ptrdiff_t begin,
                    std::ptrdiff_t end) {
  std::ptrdiff_t row = begin;
  for (; row < end; row += kBlock) {
    const std::ptrdiff_t row_end = row + kBlock < end ? row + kBlock : end;
    std::ptrdiff_t i = run.first > row ? run.first : row;
    for (; i < row_end && i <= run.last; ++i)
      turn_columns_at(run.rotations[i - run.first], h, i, row, i + 1);
    if (row + kBlock == row_end)
      rotate_block(run, i, h, row);
    else
      for (; i <= run.last; ++i) turn_columns_at(run.rotations[i - run.first], h, i, row, row_end);
  }
  turn_phase(run, h, begin, end);
}

void rotate_all_columns(int count, const ComplexRotationRun* runs, const ComplexArray& z,
                        std::ptrdiff_t begin, std::ptrdiff_t end) {
  std::ptrdiff_t row = begin;
  for (; row + kBlock <= end; row += kBlock) {
    for (int k = 0; k < count; ++k) {
      rotate_block(runs[k], runs[k].first, z, row);
      turn_phase(runs[k], z, row, row + kBlock);
    }
  }
  for (int k = 0; row < end && k < count; ++k) {
    for (std::ptrdiff_t i = runs[k].first; i <= runs[k].last; ++i)
      turn_columns_at(runs[k].rotations[i - runs[k].first], z, i, row, end);
    turn_phase(runs[k], z, row, end);
  }
}

}  // namespace

const ComplexQrKernels complex_qr_kernels_table = {triangularize, rotate_rows, rotate_columns,
                                                   rotate_all_columns};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
