#include "eigen/general/qr_kernels.hpp"

#include "pack/numeric/lanes.hpp"
#include "pack/numeric/tiles.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// The reflector that turns (p, q, r) into a multiple of the first unit vector. Returns the s by
// which that vector would be multiplied, but for its sign.
MATRIX_LANES_INLINE double make_reflector(double p, double q, double r, Reflector& f) {
  double s = __builtin_sqrt(p * p + q * q + r * r);
  if (p < 0.0) s = -s;
  p += s;
  f.x = p / s;
  f.y = q / s;
  f.z = r / s;
  f.q = q / p;
  f.r = r / p;
  return s;
}

// Finds reflector k from the column before it, or at k = m from the start vector; f is left alone
// when there is nothing to reflect.
MATRIX_LANES_INLINE void find_reflector(const Chase& c, std::ptrdiff_t k, double* h,
                                        std::ptrdiff_t ld, Reflector& f) {
  double* const before = h + (k - 1) * ld;
  if (k == c.m) {
    make_reflector(c.start[0], c.start[1], c.start[2], f);
    if (c.l != c.m) before[k] = -before[k];
    return;
  }
  const double p = before[k];
  const double q = before[k + 1];
  const double r = k != c.en - 1 ? before[k + 2] : 0.0;
  const double x = __builtin_fabs(p) + __builtin_fabs(q) + __builtin_fabs(r);
  if (x == 0.0) return;
  before[k] = -make_reflector(p / x, q / x, r / x, f) * x;
}

// Reflector k on the rows of one column.
MATRIX_LANES_INLINE void reflect_three_rows(const Reflector& f, double* column) {
  const double p = column[0] + f.q * column[1] + f.r * column[2];
  column[0] -= p * f.x;
  column[1] -= p * f.y;
  column[2] -= p * f.z;
}

MATRIX_LANES_INLINE void reflect_two_rows(const Reflector& f, double* column) {
  const double p = column[0] + f.q * column[1];
  column[0] -= p * f.x;
  column[1] -= p * f.y;
}

// One reflector on the columns a, a+ld, a+2ld of `count` rows.
MATRIX_LANES_INLINE void reflect_three_columns(const Reflector& f, std::ptrdiff_t count, double* a,
                                               std::ptrdiff_t ld) {
  double* __restrict a0 = a;
  double* __restrict a1 = a + ld;
  double* __restrict a2 = a + 2 * ld;
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const double p = f.x * a0[i] + f.y * a1[i] + f.z * a2[i];
    a0[i] -= p;
    a1[i] -= p * f.q;
    a2[i] -= p * f.r;
  }
}

MATRIX_LANES_INLINE void reflect_two_columns(const Reflector& f, std::ptrdiff_t count, double* a,
                                             std::ptrdiff_t ld) {
  double* __restrict a0 = a;
  double* __restrict a1 = a + ld;
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const double p = f.x * a0[i] + f.y * a1[i];
    a0[i] -= p;
    a1[i] -= p * f.q;
  }
}

void chase(const Chase& c, double* h, std::ptrdiff_t ld, Reflector* reflectors) {
  for (std::ptrdiff_t k = c.first; k < c.last; ++k) {
    Reflector f = {};
    find_reflector(c, k, h, ld, f);
    reflectors[k - c.first] = f;
    if (f.x == 0.0) continue;
    const std::ptrdiff_t bottom = c.en < k + 3 ? c.en : k + 3;
    if (k != c.en - 1) {
      for (std::ptrdiff_t j = k; j <= c.right; ++j) reflect_three_rows(f, h + j * ld + k);
      reflect_three_columns(f, bottom - c.top + 1, h + k * ld + c.top, ld);
    } else {
      for (std::ptrdiff_t j = k; j <= c.right; ++j) reflect_two_rows(f, h + j * ld + k);
      reflect_two_columns(f, bottom - c.top + 1, h + k * ld + c.top, ld);
    }
  }
}

// Reflector f on the two rows carried and the next one: hands back the row that is done.
template <class V>
MATRIX_LANES_INLINE V advance(const Reflector& f, V* carried, V next) {
  V done = carried[0];
  carried[0] = carried[1];
  carried[1] = next;
  if (f.x == 0.0) return done;
  const V p = done + carried[0] * f.q + carried[1] * f.r;
  done -= p * f.x;
  carried[0] -= p * f.y;
  carried[1] -= p * f.z;
  return done;
}

// A run of reflectors on the rows of G vectors of columns side by side: none waits for another. The
// rows that two reflectors share stay in registers.
template <class V, int G>
MATRIX_LANES_INLINE void reflect_rows_of(const ReflectorRun& run, double* h, std::ptrdiff_t ld) {
  constexpr int kHere = kLanesOf<V>;
  const std::ptrdiff_t step = kHere * ld;
  const std::ptrdiff_t whole = run.last == run.en ? run.last - 1 : run.last;
  const Reflector* f = run.reflectors;
  V carried[G][2];
  for (int g = 0; g < G; ++g)
    for (int c = 0; c < 2; ++c) carried[g][c] = load_row<V>(h + run.first + c + g * step, ld);
  std::ptrdiff_t k = run.first;
  for (; k + kHere <= whole; k += kHere, f += kHere) {
    Tile<V> tile[G];
    for (int g = 0; g < G; ++g) tile[g] = load_tile<V>(h + k + 2 + g * step, ld);
    for (int m = 0; m < kHere; ++m)
      for (int g = 0; g < G; ++g) tile[g].row[m] = advance(f[m], carried[g], tile[g].row[m]);
    for (int g = 0; g < G; ++g) store_tile(h + k + g * step, ld, tile[g]);
  }
  for (; k < whole; ++k, ++f)
    for (int g = 0; g < G; ++g)
      store_row(h + k + g * step, ld,
                advance(*f, carried[g], load_row<V>(h + k + 2 + g * step, ld)));
  for (int g = 0; g < G; ++g) {
    if (whole != run.last && f->x != 0.0) {
      const V p = carried[g][0] + carried[g][1] * f->q;
      carried[g][0] -= p * f->x;
      carried[g][1] -= p * f->y;
    }
    for (int c = 0; c < 2; ++c) store_row(h + whole + c + g * step, ld, carried[g][c]);
  }
}

void reflect_rows(const ReflectorRun& run, double* h, std::ptrdiff_t ld, std::ptrdiff_t begin,
                  std::ptrdiff_t end) {
  if (run.first == run.last) return;
  constexpr int kGroups = 2;
  std::ptrdiff_t j = begin;
  for (; j + kGroups * kSide <= end; j += kGroups * kSide)
    reflect_rows_of<Row, kGroups>(run, h + j * ld, ld);
  for (; j + kSide <= end; j += kSide) reflect_rows_of<Row, 1>(run, h + j * ld, ld);
  for (; j < end; ++j) reflect_rows_of<double, 1>(run, h + j * ld, ld);
}

// Rows that go through a run together, in registers.
constexpr int kVectors = 4;
constexpr int kBlock = kVectors * kWidth;

// One run on the columns of kBlock rows. The columns that two reflectors share stay in registers.
void reflect_columns_of_block(const ReflectorRun& run, double* h, std::ptrdiff_t ld) {
  const bool ends = run.last == run.en;
  const std::ptrdiff_t whole = ends ? run.last - 1 : run.last;
  double* column = h + run.first * ld;
  Vector h0[kVectors], h1[kVectors];
  for (int b = 0; b < kVectors; ++b) {
    h0[b] = load_vector(column + b * kWidth);
    h1[b] = load_vector(column + ld + b * kWidth);
  }
  const Reflector* f = run.reflectors;
  for (std::ptrdiff_t k = run.first; k < whole; ++k, ++f, column += ld) {
    for (int b = 0; b < kVectors; ++b) {
      Vector h2 = load_vector(column + 2 * ld + b * kWidth);
      if (f->x != 0.0) {
        const Vector p = h0[b] * f->x + h1[b] * f->y + h2 * f->z;
        h0[b] -= p;
        h1[b] -= p * f->q;
        h2 -= p * f->r;
      }
      store_vector(column + b * kWidth, h0[b]);
      h0[b] = h1[b];
      h1[b] = h2;
    }
  }
  for (int b = 0; b < kVectors; ++b) {
    if (ends && f->x != 0.0) {
      const Vector p = h0[b] * f->x + h1[b] * f->y;
      h0[b] -= p;
      h1[b] -= p * f->q;
    }
    store_vector(column + b * kWidth, h0[b]);
    store_vector(column + ld + b * kWidth, h1[b]);
  }
}

// The same for a few rows, reflector by reflector.
void reflect_columns_of_rows(const ReflectorRun& run, std::ptrdiff_t rows, double* h,
                             std::ptrdiff_t ld) {
  for (std::ptrdiff_t k = run.first; k < run.last; ++k) {
    const Reflector& f = run.reflectors[k - run.first];
    if (f.x == 0.0) continue;
    if (k != run.en - 1)
      reflect_three_columns(f, rows, h + k * ld, ld);
    else
      reflect_two_columns(f, rows, h + k * ld, ld);
  }
}

void reflect_columns(int count, const ReflectorRun* runs, double* h, std::ptrdiff_t ld,
                     std::ptrdiff_t begin, std::ptrdiff_t end) {
  std::ptrdiff_t i = begin;
  for (; i + kBlock <= end; i += kBlock)
    for (int s = 0; s < count; ++s)
      if (runs[s].first < runs[s].last) reflect_columns_of_block(runs[s], h + i, ld);
  for (int s = 0; i < end && s < count; ++s) reflect_columns_of_rows(runs[s], end - i, h + i, ld);
}

}  // namespace

const HessenbergKernels hessenberg_kernels_table = {chase, reflect_rows, reflect_columns};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
