#include "eigen/hermitian/tridiagonal_kernels.hpp"

#include "pack/numeric/lanes/complex_lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// A column k, and what its elements need of row k: v[k], q[k] and x[k].
struct Column {
  ComplexView a;
  Complex v;
  Complex q;
  Complex x;
};

// z - v conj(q[k]) - q conj(v[k])
template <class V>
MATRIX_INLINE ComplexOf<V> updated(ComplexOf<V> z, ComplexOf<V> v, ComplexOf<V> q,
                                   const Column& k) {
  return subtract(subtract(z, multiply_conjugate(v, k.q)), multiply_conjugate(q, k.v));
}

// One pass over the lower triangle.
template <bool kUpdate, bool kMultiply>
struct Pass {
  ComplexView a;
  ComplexView v;
  ComplexView q;
  ComplexView x;
  ComplexView w;

  Column column(Index k) const {
    Column c = {a.column(k), {}, {}, {}};
    if constexpr (kUpdate) {
      c.v = v[k];
      c.q = q[k];
    }
    if constexpr (kMultiply) c.x = x[k];
    return c;
  }

  // Elements of a column from row j on, updated.
  template <class V>
  MATRIX_INLINE ComplexOf<V> element(const Column& column, Index j) const {
    ComplexOf<V> z = load<V>(column.a, j);
    if constexpr (kUpdate) {
      z = updated(z, load<V>(v, j), load<V>(q, j), column);
      store(column.a, j, z);
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
  MATRIX_INLINE void rows(Index j, const Column& left, const Column& right, ComplexOf<V>& left_sum,
                          ComplexOf<V>& right_sum) const {
    const ComplexOf<V> l = element<V>(left, j);
    const ComplexOf<V> r = element<V>(right, j);
    if constexpr (kMultiply) {
      const ComplexOf<V> xj = load<V>(x, j);
      store(w, j, add(add(load<V>(w, j), multiply(l, left.x)), multiply(r, right.x)));
      left_sum = add(left_sum, multiply_conjugate(xj, l));
      right_sum = add(right_sum, multiply_conjugate(xj, r));
    }
  }

  // Rows first...n - 1 of a pair, and what they add to w[k] and w[k + 1].
  MATRIX_INLINE void rows_below(Index first, Index n, const Column& left,
                                const Column& right) const {
    ComplexOf<Vector> left_lanes[kParts] = {};
    ComplexOf<Vector> right_lanes[kParts] = {};
    Index whole = first;
    for (; whole + kLanes <= n; whole += kLanes)
      for (int p = 0; p < kParts; ++p)
        rows(whole + p * kWidth, left, right, left_lanes[p], right_lanes[p]);
    ComplexSums left_sums = sums_of(left_lanes);
    ComplexSums right_sums = sums_of(right_lanes);
    over_elements(whole, n, [&]<class V>(Index j, V) MATRIX_INLINE_LAMBDA {
      ComplexOf<V> left_sum = load<V>(left_sums.view(), j - whole);
      ComplexOf<V> right_sum = load<V>(right_sums.view(), j - whole);
      rows(j, left, right, left_sum, right_sum);
      store(left_sums.view(), j - whole, left_sum);
      store(right_sums.view(), j - whole, right_sum);
    });
    if constexpr (kMultiply) {
      w.set(first - 2, add(w[first - 2], left_sums.joined()));
      w.set(first - 1, add(w[first - 1], right_sums.joined()));
    }
  }

  // Columns k and k + 1.
  MATRIX_INLINE void pair(Index k, Index n) const {
    const Column left = column(k);
    const Column right = column(k + 1);
    diagonal(k, left);
    diagonal(k + 1, right);
    const Complex corner = element<double>(left, k + 1);
    if constexpr (kMultiply) {
      w.set(k, add(w[k], multiply_conjugate(right.x, corner)));
      w.set(k + 1, add(w[k + 1], multiply(corner, left.x)));
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

void update_multiply(Index n, const ComplexView& a, const ComplexView& v, const ComplexView& q,
                     const ComplexView& x, const ComplexView& w) {
  if (v.re == nullptr)
    Pass<false, true>{a, v, q, x, w}.run(n);
  else if (x.re == nullptr)
    Pass<true, false>{a, v, q, x, w}.run(n);
  else
    Pass<true, true>{a, v, q, x, w}.run(n);
}

}  // namespace

const HermitianKernels hermitian_kernels_table = {update_multiply};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
