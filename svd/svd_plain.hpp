// The singular value decomposition in plain loops: every step at once, element by element. The
// definition of what the cores compute, to the bit.
#pragma once

#include <cmath>
#include <vector>

#include "pack/numeric/vector_plain.hpp"
#include "pack/numeric/views.hpp"
#include "svd/implicit_shift.hpp"

namespace matrix_pack::plain {

using Vector = std::vector<double>;

// W is m x n, V n x n; w and rv1 the bidiagonal form.
struct Decomposition {
  Index m;
  Index n;
  Vector W, V, w, rv1;
  std::vector<Index> index;

  Decomposition(Index m, Index n, Vector a)
      : m(m), n(n), W(std::move(a)), V(size(n * n)), w(size(n)), rv1(size(n)), index(size(n)) {}

  static std::size_t size(Index count) { return static_cast<std::size_t>(count); }
  double& at(Vector& a, Index rows, Index i, Index j) { return a[size(j * rows + i)]; }
  double& W_(Index i, Index j) { return at(W, m, i, j); }
  double& V_(Index i, Index j) { return at(V, n, i, j); }
  double& w_(Index i) { return w[size(i)]; }
  double& rv1_(Index i) { return rv1[size(i)]; }

  // The sum over k = first...end - 1, in the shared order counted from `first`.
  template <class Term>
  static double sum_from(Index first, Index end, Term term) {
    return sum(end - first, [=](Index k) { return term(first + k); });
  }

  double bidiagonalise() {
    double g = 0.0, scale = 0.0, anorm = 0.0;
    for (Index i = 0; i < n; ++i) {
      const Index l = i + 1;
      rv1_(i) = scale * g;
      column_step(i, l, g, scale);
      w_(i) = scale * g;
      g = scale = 0.0;
      if (i != n - 1) row_step(i, l, g, scale);
      if (std::fabs(w_(i)) + std::fabs(rv1_(i)) > anorm)
        anorm = std::fabs(w_(i)) + std::fabs(rv1_(i));
    }
    return anorm;
  }

  void column_step(Index i, Index l, double& g, double& scale) {
    double s = 0.0;
    g = 0.0;
    scale = sum_from(i, m, [&](auto k) { return std::fabs(W_(k, i)); });
    if (scale == 0.0) return;
    for (Index k = i; k < m; ++k) {
      W_(k, i) /= scale;
      s += W_(k, i) * W_(k, i);
    }
    double f = W_(i, i);
    g = f >= 0.0 ? -std::sqrt(s) : std::sqrt(s);
    const double h = f * g - s;
    W_(i, i) = f - g;
    for (Index j = l; j < n; ++j) {
      f = sum_from(i, m, [&](auto k) { return W_(k, i) * W_(k, j); }) / h;
      for (Index k = i; k < m; ++k) W_(k, j) += f * W_(k, i);
    }
    for (Index k = i; k < m; ++k) W_(k, i) *= scale;
  }

  void row_step(Index i, Index l, double& g, double& scale) {
    double s = 0.0;
    scale = sum_from(l, n, [&](auto k) { return std::fabs(W_(i, k)); });
    if (scale == 0.0) return;
    for (Index k = l; k < n; ++k) {
      W_(i, k) /= scale;
      s += W_(i, k) * W_(i, k);
    }
    const double f = W_(i, l);
    g = f >= 0.0 ? -std::sqrt(s) : std::sqrt(s);
    const double h = f * g - s;
    W_(i, l) = f - g;
    for (Index k = l; k < n; ++k) rv1_(k) = W_(i, k) / h;
    for (Index j = l; j < m; ++j) {
      const double t = sum_from(l, n, [&](auto k) { return W_(j, k) * W_(i, k); });
      for (Index k = l; k < n; ++k) W_(j, k) += t * rv1_(k);
    }
    for (Index k = l; k < n; ++k) W_(i, k) *= scale;
  }

  void accumulate_right() {
    for (Index i = n - 1; i >= 0; --i) {
      const Index l = i + 1;
      if (l < n && rv1_(l) != 0.0) {
        for (Index j = l; j < n; ++j) V_(j, i) = W_(i, j) / W_(i, l) / rv1_(l);
        for (Index j = l; j < n; ++j) {
          const double t = sum_from(l, n, [&](auto k) { return W_(i, k) * V_(k, j); });
          for (Index k = l; k < n; ++k) V_(k, j) += t * V_(k, i);
        }
      }
      for (Index j = l; j < n; ++j) V_(i, j) = V_(j, i) = 0.0;
      V_(i, i) = 1.0;
    }
  }

  void accumulate_left() {
    for (Index i = n - 1; i >= 0; --i) {
      const Index l = i + 1;
      const double g = w_(i);
      for (Index j = l; j < n; ++j) W_(i, j) = 0.0;
      if (g != 0.0)
        for (Index j = l; j < n; ++j) {
          const double t = sum_from(l, m, [&](auto k) { return W_(k, i) * W_(k, j); });
          const double f = t / W_(i, i) / g;
          for (Index k = i; k < m; ++k) W_(k, j) += f * W_(k, i);
        }
      for (Index j = i; j < m; ++j) W_(j, i) = g != 0.0 ? W_(j, i) / g : 0.0;
      W_(i, i) += 1.0;
    }
  }

  // Rotations that are applied as they come.
  struct Immediate {
    static constexpr bool kGuardsFirstRoot = true;
    Decomposition& d;
    Index next_right = 0;
    Index next_left = 0;

    void cancel(Index p, Index i, double c, double s) {
      rotate(d.m, c, s, &d.W_(0, p), &d.W_(0, i));
    }
    void begin_sweep(Index l, Index) { next_right = next_left = l; }
    void right(double c, double s) {
      rotate(d.n, c, s, &d.V_(0, next_right), &d.V_(0, next_right + 1));
      ++next_right;
    }
    void left(double c, double s) {
      rotate(d.m, c, s, &d.W_(0, next_left), &d.W_(0, next_left + 1));
      ++next_left;
    }
    void negate(Index k) { scale(d.n, -1.0, &d.V_(0, k)); }
  };

  const char* run() {
    const double anorm = bidiagonalise();
    accumulate_right();
    accumulate_left();
    Immediate rotations{*this};
    const char* message = diagonalise(n, w.data(), rv1.data(), negligible(anorm), rotations);
    for (Index i = 0; i < n; ++i) index[size(i)] = i;
    sort_descending(n, w.data(),
                    [&](auto i, auto j) { std::swap(index[size(i)], index[size(j)]); });
    W = permuted(W, m);
    V = permuted(V, n);
    return message;
  }

  Vector permuted(Vector& a, Index rows) {
    Vector result;
    for (Index i = 0; i < n; ++i)
      for (Index r = 0; r < rows; ++r) result.push_back(at(a, rows, r, index[size(i)]));
    return result;
  }
};

}  // namespace matrix_pack::plain
