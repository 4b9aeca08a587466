// The complex eigenproblem in plain loops, every step applied at once: the definition of what the
// unitary reduction and the sweeps of the QR iteration compute, to the bit.
#pragma once

#include <cmath>

#include "eigen/shared/plain.hpp"

namespace matrix_pack::plain {

struct ComplexSquare {
  explicit ComplexSquare(int order) : n(order), re(order), im(order) {}
  Complex operator()(int i, int j) const { return {re(i, j), im(i, j)}; }
  void set(int i, int j, Complex z) {
    re(i, j) = z.re;
    im(i, j) = z.im;
  }
  ComplexView view() { return {re.a.data(), im.a.data(), n}; }

  int n;
  Square re;
  Square im;
};

// f = u^H x / h over rows m..high of column j of A, then x := x - f u.
inline void reflect_column(ComplexSquare& A, int j, int m, int high, const Row& ur, const Row& ui,
                           double h) {
  const int count = high - m + 1;
  const double fr = sum(count,
                        [&](auto k) {
                          const int i = m + int(k);
                          return ur[i] * A.re(i, j) + ui[i] * A.im(i, j);
                        }) /
                    h;
  const double fi = sum(count,
                        [&](auto k) {
                          const int i = m + int(k);
                          return ur[i] * A.im(i, j) - ui[i] * A.re(i, j);
                        }) /
                    h;
  for (int i = m; i <= high; ++i) {
    A.re(i, j) -= fr * ur[i] - fi * ui[i];
    A.im(i, j) -= fr * ui[i] + fi * ur[i];
  }
}

// A := (I - u u^H / h) A (I - u u^H / h), in rows and columns m..high.
inline void reflect(ComplexSquare& A, int m, int high, const Row& ur, const Row& ui, double h) {
  for (int j = m; j < A.n; ++j) reflect_column(A, j, m, high, ur, ui, h);
  for (int i = 0; i <= high; ++i) {
    double wr = 0.0, wi = 0.0;
    for (int j = m; j <= high; ++j) {
      wr += A.re(i, j) * ur[j] - A.im(i, j) * ui[j];
      wi += A.re(i, j) * ui[j] + A.im(i, j) * ur[j];
    }
    wr /= h;
    wi /= h;
    for (int j = m; j <= high; ++j) {
      A.re(i, j) -= wr * ur[j] + wi * ui[j];
      A.im(i, j) -= wi * ur[j] - wr * ui[j];
    }
  }
}

// Unitary reduction to Hessenberg form within low..high; Z becomes the product of the reflections.
inline void reduce_unitary(ComplexSquare& A, int low, int high, ComplexSquare& Z) {
  std::vector<Row> urs, uis;
  std::vector<double> hs;
  std::vector<int> ms;
  for (int m = low + 1; m < high; ++m) {
    const double scale = sum(high - m + 1, [&](auto k) {
      return std::fabs(A.re(m + int(k), m - 1)) + std::fabs(A.im(m + int(k), m - 1));
    });
    if (scale == 0.0) continue;
    Row ur(A.n), ui(A.n);
    double h = 0.0;
    for (int i = high; i >= m; --i) {
      ur[i] = A.re(i, m - 1) / scale;
      ui[i] = A.im(i, m - 1) / scale;
      h += ur[i] * ur[i] + ui[i] * ui[i];
    }
    double g = std::sqrt(h);
    const double f = scaled_modulus(ur[m], ui[m]);
    if (f == 0.0) {
      ur[m] = g;
      A.re(m, m - 1) = scale;
    } else {
      h += f * g;
      g /= f;
      ur[m] *= 1.0 + g;
      ui[m] *= 1.0 + g;
    }
    const Complex reduced = {-g * A.re(m, m - 1), -g * A.im(m, m - 1)};
    reflect(A, m, high, ur, ui, h);
    A.set(m, m - 1, reduced);
    urs.push_back(ur);
    uis.push_back(ui);
    hs.push_back(h);
    ms.push_back(m);
  }
  for (std::size_t k = ms.size(); k-- > 0;)
    for (int j = ms[k]; j <= high; ++j) reflect_column(Z, j, ms[k], high, urs[k], uis[k], hs[k]);
}

// One single-shift sweep of the block l..en, whose subdiagonal is real: in the rows of columns up
// to `right`, the columns of rows from `top` on, and the columns of rows z_begin..z_end-1 of Z.
struct ComplexSweep {
  int l, en, top, right, z_begin, z_end;

  void run(ComplexSquare& H, ComplexSquare& Z) const {
    Row xr(en + 1), xi(en + 1), s(en + 1);
    for (int i = l + 1; i <= en; ++i) {
      const Complex d = H(i - 1, i - 1);
      const double below = H.re(i, i - 1);
      const double norm = scaled_modulus(scaled_modulus(d.re, d.im), below);
      xr[i] = d.re / norm;
      xi[i] = d.im / norm;
      s[i] = below / norm;
      H.set(i - 1, i - 1, {norm, 0.0});
      H.re(i, i - 1) = 0.0;
      for (int j = i; j <= right; ++j) {
        const Complex y = H(i - 1, j), z = H(i, j);
        H.set(
            i - 1, j,
            {y.re * xr[i] + y.im * xi[i] + z.re * s[i], y.im * xr[i] - y.re * xi[i] + z.im * s[i]});
        H.set(
            i, j,
            {z.re * xr[i] - z.im * xi[i] - y.re * s[i], z.im * xr[i] + z.re * xi[i] - y.im * s[i]});
      }
    }
    const Complex last = H(en, en);
    const double norm = scaled_modulus(last.re, last.im);
    const Complex phase = {last.re / norm, last.im / norm};
    if (last.im != 0.0) {
      H.set(en, en, {norm, 0.0});
      for (int j = en + 1; j <= right; ++j) H.set(en, j, multiply({phase.re, -phase.im}, H(en, j)));
    }
    for (int i = l + 1; i <= en; ++i) {
      for (int k = top; k <= i; ++k) rotate_columns(H, k, i, xr[i], xi[i], s[i]);
      for (int k = z_begin; k < z_end; ++k) rotate_columns(Z, k, i, xr[i], xi[i], s[i]);
    }
    if (last.im == 0.0) return;
    for (int k = top; k <= en; ++k) H.set(k, en, multiply(phase, H(k, en)));
    for (int k = z_begin; k < z_end; ++k) Z.set(k, en, multiply(phase, Z(k, en)));
  }

  // Columns i-1 and i of row k.
  static void rotate_columns(ComplexSquare& A, int k, int i, double xr, double xi, double s) {
    const Complex y = A(k, i - 1), z = A(k, i);
    A.set(k, i - 1, {y.re * xr - y.im * xi + z.re * s, y.im * xr + y.re * xi + z.im * s});
    A.set(k, i, {z.re * xr + z.im * xi - y.re * s, z.im * xr - z.re * xi - y.im * s});
  }
};

}  // namespace matrix_pack::plain
