#include "eigen/hermitian/tridiagonal_kernels.hpp"

#include "pack/numeric/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

using Index = std::ptrdiff_t;

double sum_magnitudes(Index n, const ComplexVector& x) {
  return sum_of(
      n, [&]<class V>(Index k, V) __attribute__((always_inline)) {
        return magnitude(load<V>(x.re + k)) + magnitude(load<V>(x.im + k));
      });
}

double sum_squares(Index n, const ComplexVector& x) {
  return sum_of(
      n, [&]<class V>(Index k, V) __attribute__((always_inline)) {
        const V re = load<V>(x.re + k);
        const V im = load<V>(x.im + k);
        return re * re + im * im;
      });
}

// Complex numbers of any width.
template <class V>
struct ComplexOf {
  V re;
  V im;
};

template <class V>
MATRIX_LANES_INLINE ComplexOf<V> load_complex(const ComplexVector& x, Index k) {
  return {load<V>(x.re + k), load<V>(x.im + k)};
}

template <class V>
MATRIX_LANES_INLINE void store_complex(const ComplexVector& x, Index k, ComplexOf<V> z) {
  store(x.re + k, z.re);
  store(x.im + k, z.im);
}

// A column k, and what its elements need of row k: v[k], q[k] and x[k].
struct Column {
  ComplexVector a;
  ComplexOf<double> v;
  ComplexOf<double> q;
  ComplexOf<double> x;
};

// z - v conj(q[k]) - q conj(v[k])
template <class V>
MATRIX_LANES_INLINE ComplexOf<V> updated(ComplexOf<V> z, ComplexOf<V> v, ComplexOf<V> q,
                                         const Column& k) {
  return {z.re - (v.re * k.q.re + v.im * k.q.im) - (q.re * k.v.re + q.im * k.v.im),
          z.im - (v.im * k.q.re - v.re * k.q.im) - (q.im * k.v.re - q.re * k.v.im)};
}

// sum + a z
template <class V, class W>
MATRIX_LANES_INLINE ComplexOf<V> add_product(ComplexOf<V> sum, ComplexOf<V> a, ComplexOf<W> z) {
  return {sum.re + (a.re * z.re - a.im * z.im), sum.im + (a.re * z.im + a.im * z.re)};
}

// sum + conj(a) z
template <class V>
MATRIX_LANES_INLINE ComplexOf<V> add_conjugate_product(ComplexOf<V> sum, ComplexOf<V> a,
                                                       ComplexOf<V> z) {
  return {sum.re + (a.re * z.re + a.im * z.im), sum.im + (a.re * z.im - a.im * z.re)};
}

// Eight partial sums of complex terms.
struct Sums {
  explicit Sums(const ComplexOf<Vector>* lanes) {
    for (int p = 0; p < kParts; ++p) put(p * kWidth, lanes[p]);
  }
  template <class V>
  MATRIX_LANES_INLINE ComplexOf<V> at(Index q) const {
    return {load<V>(re + q), load<V>(im + q)};
  }
  template <class V>
  MATRIX_LANES_INLINE void put(Index q, ComplexOf<V> sum) {
    store(re + q, sum.re);
    store(im + q, sum.im);
  }
  void add_to(const ComplexVector& w, Index k) const {
    w.re[k] += join(re);
    w.im[k] += join(im);
  }

  double re[kLanes];
  double im[kLanes];
};

// One pass over the lower triangle.
template <bool kUpdate, bool kMultiply>
struct Pass {
  ComplexArray a;
  ComplexVector v;
  ComplexVector q;
  ComplexVector x;
  ComplexVector w;

  Column column(Index k) const {
    Column c = {{a.re + k * a.ld, a.im + k * a.ld}, {}, {}, {}};
    if constexpr (kUpdate) {
      c.v = load_complex<double>(v, k);
      c.q = load_complex<double>(q, k);
    }
    if constexpr (kMultiply) c.x = load_complex<double>(x, k);
    return c;
  }

  // Elements of a column from row j on, updated.
  template <class V>
  MATRIX_LANES_INLINE ComplexOf<V> element(const Column& column, Index j) const {
    ComplexOf<V> z = load_complex<V>(column.a, j);
    if constexpr (kUpdate) {
      z = updated(z, load_complex<V>(v, j), load_complex<V>(q, j), column);
      store_complex(column.a, j, z);
    }
    return z;
  }

  // Element (k, k), which is real.
  void diagonal(Index k, const Column& column) const {
    double& akk = column.a.re[k];
    if constexpr (kUpdate) {
      const double vq = column.v.re * column.q.re + column.v.im * column.q.im;
      akk = akk - vq - vq;
    }
    if constexpr (kMultiply) {
      w.re[k] += akk * column.x.re;
      w.im[k] += akk * column.x.im;
    }
  }

  // Rows from j on, as many as V has elements, of the columns k and k + 1 of a pair.
  template <class V>
  MATRIX_LANES_INLINE void rows(Index j, const Column& left, const Column& right,
                                ComplexOf<V>& left_sum, ComplexOf<V>& right_sum) const {
    const ComplexOf<V> l = element<V>(left, j);
    const ComplexOf<V> r = element<V>(right, j);
    if constexpr (kMultiply) {
      const ComplexOf<V> xj = load_complex<V>(x, j);
      store_complex(w, j, add_product(add_product(load_complex<V>(w, j), l, left.x), r, right.x));
      left_sum = add_conjugate_product(left_sum, l, xj);
      right_sum = add_conjugate_product(right_sum, r, xj);
    }
  }

  // Rows first...n - 1 of a pair, and what they add to w[k] and w[k + 1].
  MATRIX_LANES_INLINE void rows_below(Index first, Index n, const Column& left,
                                      const Column& right) const {
    ComplexOf<Vector> left_lanes[kParts] = {};
    ComplexOf<Vector> right_lanes[kParts] = {};
    Index whole = first;
    for (; whole + kLanes <= n; whole += kLanes)
      for (int p = 0; p < kParts; ++p)
        rows(whole + p * kWidth, left, right, left_lanes[p], right_lanes[p]);
    Sums left_sums(left_lanes);
    Sums right_sums(right_lanes);
    over_elements(
        whole, n, [&]<class V>(Index j, V) __attribute__((always_inline)) {
          ComplexOf<V> left_sum = left_sums.at<V>(j - whole);
          ComplexOf<V> right_sum = right_sums.at<V>(j - whole);
          rows(j, left, right, left_sum, right_sum);
          left_sums.put(j - whole, left_sum);
          right_sums.put(j - whole, right_sum);
        });
    if constexpr (kMultiply) {
      left_sums.add_to(w, first - 2);
      right_sums.add_to(w, first - 1);
    }
  }

  // Columns k and k + 1.
  MATRIX_LANES_INLINE void pair(Index k, Index n) const {
    const Column left = column(k);
    const Column right = column(k + 1);
    diagonal(k, left);
    diagonal(k + 1, right);
    const ComplexOf<double> corner = element<double>(left, k + 1);
    if constexpr (kMultiply) {
      store_complex(w, k, add_conjugate_product(load_complex<double>(w, k), corner, right.x));
      store_complex(w, k + 1, add_product(load_complex<double>(w, k + 1), corner, left.x));
    }
    rows_below(k + 2, n, left, right);
  }

  void run(Index n) const {
    if constexpr (kMultiply)
      for (Index j = 0; j < n; ++j) w.re[j] = w.im[j] = 0.0;
    Index k = 0;
    for (; k + 2 <= n; k += 2) pair(k, n);
    if (k < n) diagonal(k, column(k));
  }
};

void update_multiply(Index n, const ComplexArray& a, const ComplexVector& v, const ComplexVector& q,
                     const ComplexVector& x, const ComplexVector& w) {
  if (v.re == nullptr)
    Pass<false, true>{a, v, q, x, w}.run(n);
  else if (x.re == nullptr)
    Pass<true, false>{a, v, q, x, w}.run(n);
  else
    Pass<true, true>{a, v, q, x, w}.run(n);
}

}  // namespace

const HermitianKernels hermitian_kernels_table = {sum_magnitudes, sum_squares, update_multiply};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
