#include "eigen/general/qr_kernels.hpp"

#include "pack/numeric/lanes/sweeps.hpp"
#include "pack/numeric/lanes/tiles.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// The reflector that takes (x, y, z) to a multiple of the first unit vector. Returns that multiple,
// but for its sign.
MATRIX_INLINE double make_reflector(double x, double y, double z, Reflector& f) {
  double s = __builtin_sqrt(x * x + y * y + z * z);
  if (x < 0.0) s = -s;
  x += s;
  f.x = x / s;
  f.y = y / s;
  f.z = z / s;
  f.q = y / x;
  f.r = z / x;
  return s;
}

// Finds reflector k from the column before it, or at k = m from the start vector; f is left alone
// when there is nothing to reflect.
MATRIX_INLINE void find_reflector(const Chase& c, Index k, RealView h, Reflector& f) {
  double* const before = h.column(k - 1);
  if (k == c.m) {
    make_reflector(c.start[0], c.start[1], c.start[2], f);
    if (c.block != c.m) before[k] = -before[k];
    return;
  }
  const double x = before[k];
  const double y = before[k + 1];
  const double z = k != c.end - 1 ? before[k + 2] : 0.0;
  const double size = __builtin_fabs(x) + __builtin_fabs(y) + __builtin_fabs(z);
  if (size == 0.0) return;
  before[k] = -make_reflector(x / size, y / size, z / size, f) * size;
}

// A reflector on its three rows (columns), elements or vectors of them. The last one of a sweep has
// two.
template <bool kRows, class V>
MATRIX_INLINE void reflect_three(const Reflector& f, V& h0, V& h1, V& h2) {
  if constexpr (kRows) {
    const V p = h0 + h1 * f.q + h2 * f.r;
    h0 -= p * f.x;
    h1 -= p * f.y;
    h2 -= p * f.z;
  } else {
    const V p = h0 * f.x + h1 * f.y + h2 * f.z;
    h0 -= p;
    h1 -= p * f.q;
    h2 -= p * f.r;
  }
}
template <bool kRows, class V>
MATRIX_INLINE void reflect_two(const Reflector& f, V& h0, V& h1) {
  if constexpr (kRows) {
    const V p = h0 + h1 * f.q;
    h0 -= p * f.x;
    h1 -= p * f.y;
  } else {
    const V p = h0 * f.x + h1 * f.y;
    h0 -= p;
    h1 -= p * f.q;
  }
}

// One reflector on the first columns of `count` rows.
MATRIX_INLINE void reflect_three_columns(const Reflector& f, Index count, RealView a) {
  double* __restrict a0 = a.column(0);
  double* __restrict a1 = a.column(1);
  double* __restrict a2 = a.column(2);
  for (Index i = 0; i < count; ++i) reflect_three<false>(f, a0[i], a1[i], a2[i]);
}

MATRIX_INLINE void reflect_two_columns(const Reflector& f, Index count, RealView a) {
  double* __restrict a0 = a.column(0);
  double* __restrict a1 = a.column(1);
  for (Index i = 0; i < count; ++i) reflect_two<false>(f, a0[i], a1[i]);
}

void chase(const Chase& c, RealView h, Reflector* reflectors) {
  for (Index k = c.first; k < c.last; ++k) {
    Reflector f = {};
    find_reflector(c, k, h, f);
    reflectors[k - c.first] = f;
    if (f.x == 0.0) continue;
    const Index rows = smaller(c.end, k + 3) - c.top + 1;
    if (k != c.end - 1) {
      for (Index j = k; j <= c.right; ++j)
        reflect_three<true>(f, h(k, j), h(k + 1, j), h(k + 2, j));
      reflect_three_columns(f, rows, h.from(c.top, k));
    } else {
      for (Index j = k; j <= c.right; ++j) reflect_two<true>(f, h(k, j), h(k + 1, j));
      reflect_two_columns(f, rows, h.from(c.top, k));
    }
  }
}

// Reflector f on the two rows carried and the next one: hands back the row that is done.
template <class V>
MATRIX_INLINE V advance(const Reflector& f, V* carried, V next) {
  V done = carried[0];
  carried[0] = carried[1];
  carried[1] = next;
  if (f.x != 0.0) reflect_three<true>(f, done, carried[0], carried[1]);
  return done;
}

void reflect_rows(const ReflectorRun& run, RealView h, Index begin, Index end) {
  if (run.first == run.last) return;
  // The last reflector of a sweep has two rows.
  const Index threes = (run.last == run.end ? run.last - 1 : run.last) - run.first;
  const Reflector* const f = run.reflectors;
  over_columns<2>(begin, end, [=]<class V, int G>(Index j, Columns<V, G>) MATRIX_INLINE_LAMBDA {
    double* x[G];
    for (int g = 0; g < G; ++g) x[g] = h.column(j + g * kLanesOf<V>) + run.first;
    const auto apply = [=](Index i, auto& carried, auto& row) MATRIX_INLINE_LAMBDA {
      for (int g = 0; g < G; ++g) row[g] = advance(f[i], carried[g], row[g]);
    };
    const auto finish = [=](auto& carried) MATRIX_INLINE_LAMBDA {
      if (run.last != run.end || f[threes].x == 0.0) return;
      for (int g = 0; g < G; ++g) reflect_two<true>(f[threes], carried[g][0], carried[g][1]);
    };
    carry_rows<V, 2>(threes, x, h.ld, apply, finish);
  });
}

// Rows that go through a run together, in registers.
constexpr int kVectors = 4;
constexpr int kBlock = kVectors * kWidth;

// One run on the columns of kBlock rows. The columns that two reflectors share stay in registers.
template <bool kRows>
void reflect_block(const ReflectorRun& run, RealView h) {
  const bool ends = run.last == run.end;
  const Index whole = ends ? run.last - 1 : run.last;
  double* column = h.column(run.first);
  Vector h0[kVectors], h1[kVectors];
  for (int b = 0; b < kVectors; ++b) {
    h0[b] = load_vector(column + b * kWidth);
    h1[b] = load_vector(column + h.ld + b * kWidth);
  }
  const Reflector* f = run.reflectors;
  for (Index k = run.first; k < whole; ++k, ++f, column += h.ld) {
    for (int b = 0; b < kVectors; ++b) {
      Vector h2 = load_vector(column + 2 * h.ld + b * kWidth);
      if (f->x != 0.0) reflect_three<kRows>(*f, h0[b], h1[b], h2);
      store_vector(column + b * kWidth, h0[b]);
      h0[b] = h1[b];
      h1[b] = h2;
    }
  }
  for (int b = 0; b < kVectors; ++b) {
    if (ends && f->x != 0.0) reflect_two<kRows>(*f, h0[b], h1[b]);
    store_vector(column + b * kWidth, h0[b]);
    store_vector(column + h.ld + b * kWidth, h1[b]);
  }
}

// The same for a few rows, reflector by reflector.
void reflect_columns_of_rows(const ReflectorRun& run, Index rows, RealView h) {
  for (Index k = run.first; k < run.last; ++k) {
    const Reflector& f = run.reflectors[k - run.first];
    if (f.x == 0.0) continue;
    if (k != run.end - 1)
      reflect_three_columns(f, rows, h.from(0, k));
    else
      reflect_two_columns(f, rows, h.from(0, k));
  }
}

// All runs on the columns of kBlock rows.
template <bool kRows>
void reflect_block_by_tiles(int count, const ReflectorRun* runs, RealView h) {
  const auto range = [=](Index s) { return Range{runs[s].first, runs[s].last}; };
  by_tiles(count, 2, range, [=](Index s, Index from, Index to) MATRIX_INLINE_LAMBDA {
    reflect_block<kRows>({from, to, runs[s].end, runs[s].reflectors + (from - runs[s].first)}, h);
  });
}

void reflect_columns(int count, const ReflectorRun* runs, RealView h, Index begin, Index end) {
  Index i = begin;
  for (; i + kBlock <= end; i += kBlock) reflect_block_by_tiles<false>(count, runs, h.from(i, 0));
  for (int s = 0; i < end && s < count; ++s)
    reflect_columns_of_rows(runs[s], end - i, h.from(i, 0));
}

void reflect_transposed(int count, const ReflectorRun* runs, RealView panel, Index cols) {
  for (Index j = 0; j < cols; j += kBlock)
    reflect_block_by_tiles<true>(count, runs, panel.from(j, 0));
}

}  // namespace

const HessenbergKernels hessenberg_kernels_table = {chase, reflect_rows, reflect_columns,
                                                    reflect_transposed};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
