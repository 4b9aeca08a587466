#include "eigen/qz/reflector_kernels.hpp"

#include "pack/numeric/lanes/lanes.hpp"
#include "pack/numeric/lanes/tiles.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

template <class Number>
MATRIX_INLINE void reflect(const Reflector2& h, Number& x1, Number& x2) {
  const Number t = x1 + h.u2 * x2;
  x1 += t * h.v1;
  x2 += t * h.v2;
}

template <class Number>
MATRIX_INLINE void reflect(const Reflector3& h, Number& x1, Number& x2, Number& x3) {
  const Number t = x1 + h.u2 * x2 + h.u3 * x3;
  x1 += t * h.v1;
  x2 += t * h.v2;
  x3 += t * h.v3;
}

// How many rows a chase carries from one reflector to the next.
constexpr int carried_rows(const Reflector2*) {
  return 1;
}
constexpr int carried_rows(const Reflector3*) {
  return 2;
}

// One reflector of a chase on the rows carried and the next row: hands back the row that is done.
template <class V>
MATRIX_INLINE V advance(const Reflector2& h, V* carried, V next) {
  V done = carried[0];
  reflect(h, done, next);
  carried[0] = next;
  return done;
}

template <class V>
MATRIX_INLINE V advance(const Reflector3& h, V* carried, V next) {
  V done = carried[0];
  reflect(h, done, carried[1], next);
  carried[0] = carried[1];
  carried[1] = next;
  return done;
}

// A chase on the same columns of two matrices side by side: neither waits for the other.
template <class Reflector>
MATRIX_INLINE void chase(Index count, const Reflector* h, Index cols, double* a, double* b,
                         Index ld) {
  constexpr int kCarried = carried_rows(static_cast<Reflector*>(nullptr));
  over_columns<1>(0, cols, [=]<class V, int G>(Index j, Columns<V, G>) MATRIX_INLINE_LAMBDA {
    double* const x[2] = {a + j * ld, b + j * ld};
    carry_rows<V, kCarried>(count, x, ld,
                            [=](Index i, auto& carried, auto& row) MATRIX_INLINE_LAMBDA {
                              for (int m = 0; m < 2; ++m)
                                row[m] = advance(h[i], carried[m], row[m]);
                            });
  });
}

void chase_rows2(Index count, const Reflector2* h, Index cols, double* a, double* b, Index ld) {
  chase(count, h, cols, a, b, ld);
}

void chase_rows3(Index count, const Reflector3* h, Index cols, double* a, double* b, Index ld) {
  chase(count, h, cols, a, b, ld);
}

// One reflector of a climb on the row carried and the one above: hands back the row that is done.
template <class V>
MATRIX_INLINE V ascend(const Reflector2& h, V& carried, V above) {
  V done = carried;
  reflect(h, above, done);
  carried = above;
  return done;
}

// A climb on G vectors of columns side by side: none waits for another.
template <class V, int G>
MATRIX_INLINE void climb_columns(Index count, const Reflector2* h, double* x, Index ld) {
  constexpr int kLanesHere = kLanesOf<V>;
  const Index step = kLanesHere * ld;
  V carried[G];
  for (int g = 0; g < G; ++g) carried[g] = load_row<V>(x + count + g * step, ld);
  Index i = count;
  for (; i >= kLanesHere; i -= kLanesHere) {
    Tile<V> tile[G];
    for (int g = 0; g < G; ++g) tile[g] = load_tile<V>(x + i - kLanesHere + g * step, ld);
    for (int m = kLanesHere - 1; m >= 0; --m)
      for (int g = 0; g < G; ++g)
        tile[g].row[m] = ascend(h[i - kLanesHere + m], carried[g], tile[g].row[m]);
    for (int g = 0; g < G; ++g) store_tile(x + i - kLanesHere + 1 + g * step, ld, tile[g]);
  }
  while (i-- > 0) {
    for (int g = 0; g < G; ++g) {
      const V above = load_row<V>(x + i + g * step, ld);
      store_row(x + i + 1 + g * step, ld, ascend(h[i], carried[g], above));
    }
  }
  for (int g = 0; g < G; ++g) store_row(x + g * step, ld, carried[g]);
}

void climb_rows(Index count, const Reflector2* h, Index cols, double* x, Index ld) {
  over_columns<2>(0, cols, [=]<class V, int G>(Index j, Columns<V, G>) MATRIX_INLINE_LAMBDA {
    climb_columns<V, G>(count, h, x + j * ld, ld);
  });
}

// The reflectors of a climb over columns on G vectors of rows side by side.
template <class V, int G>
MATRIX_INLINE void climb_elements(Index count, const Reflector2* h, double* x, Index ld) {
  V carried[G];
  for (int g = 0; g < G; ++g) carried[g] = load<V>(x + count * ld + g * kLanesOf<V>);
  for (Index i = count; i-- > 0;) {
    for (int g = 0; g < G; ++g) {
      V left = load<V>(x + i * ld + g * kLanesOf<V>);
      reflect(h[i], carried[g], left);
      store(x + (i + 1) * ld + g * kLanesOf<V>, carried[g]);
      carried[g] = left;
    }
  }
  for (int g = 0; g < G; ++g) store(x + g * kLanesOf<V>, carried[g]);
}

void climb_cols(Index count, const Reflector2* h, Index rows, double* x, Index ld) {
  constexpr int kGroup = 4;
  Index r = 0;
  for (; r + kGroup * kWidth <= rows; r += kGroup * kWidth)
    climb_elements<Vector, kGroup>(count, h, x + r, ld);
  over_elements(r, rows, [&]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    climb_elements<V, 1>(count, h, x + k, ld);
  });
}

template <class Number>
MATRIX_INLINE void reflect_elements(const Reflector2& h, double* x, Index ld) {
  Number x1 = load<Number>(x + ld);
  Number x2 = load<Number>(x);
  reflect(h, x1, x2);
  store(x + ld, x1);
  store(x, x2);
}

template <class Number>
MATRIX_INLINE void reflect_elements(const Reflector3& g, const Reflector2& h, double* x, Index ld) {
  Number x1 = load<Number>(x + 2 * ld);
  Number x2 = load<Number>(x + ld);
  Number x3 = load<Number>(x);
  reflect(g, x1, x2, x3);
  reflect(h, x2, x3);
  store(x + 2 * ld, x1);
  store(x + ld, x2);
  store(x, x3);
}

void reflect_cols2(const Reflector2& h, Index rows, double* x, Index ld) {
  const Reflector2 local = h;  // A copy: no store can change it.
  over_elements(0, rows, [&]<class V>(Index r, V) MATRIX_INLINE_LAMBDA {
    reflect_elements<V>(local, x + r, ld);
  });
}

void reflect_cols3(const Reflector3& g, const Reflector2& h, Index rows, double* x, Index ld) {
  const Reflector3 first = g;
  const Reflector2 second = h;
  over_elements(0, rows, [&]<class V>(Index r, V) MATRIX_INLINE_LAMBDA {
    reflect_elements<V>(first, second, x + r, ld);
  });
}

void add_pencil(Index n, double beta, double alfa, const double* __restrict a,
                const double* __restrict b, double x, double* __restrict r) {
  for (Index i = 0; i < n; ++i) r[i] += (beta * a[i] - alfa * b[i]) * x;
}

void add_complex_pencil(Index n, double beta, double alfr, double alfi, const double* __restrict a,
                        const double* __restrict b, double xr, double xi, double* __restrict rr,
                        double* __restrict ri) {
  for (Index i = 0; i < n; ++i) {
    const double re = beta * a[i] - alfr * b[i];
    const double im = -alfi * b[i];
    rr[i] += re * xr - im * xi;
    ri[i] += re * xi + im * xr;
  }
}

}  // namespace

const QzKernels qz_kernels_table = {chase_rows2,   chase_rows3,   climb_rows, climb_cols,
                                    reflect_cols2, reflect_cols3, add_pencil, add_complex_pencil};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
