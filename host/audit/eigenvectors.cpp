// Checks of eigenvecs and eigenvec.
#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/audit/second_call.hpp"

namespace audit {

namespace {

// A complex column.
struct Column {
  Vector re, im;
  std::size_t size() const { return re.size(); }
};

Column column_of(const Parts& m, int j) {
  const auto n = static_cast<std::size_t>(m.re.rows);
  Column x = {Vector(m.re.column(j), m.re.column(j) + n), Vector(n)};
  if (m.is_complex()) x.im.assign(m.im.column(j), m.im.column(j) + n);
  return x;
}

Column product(const Parts& A, const Column& x) {
  Column y = {audit::product(A.re, x.re), audit::product(A.re, x.im)};
  if (!A.is_complex()) return y;
  const Vector a = audit::product(A.im, x.im), b = audit::product(A.im, x.re);
  for (std::size_t i = 0; i < y.size(); ++i) {
    y.re[i] -= a[i];
    y.im[i] += b[i];
  }
  return y;
}

// xᴴ y.
Complex inner(const Column& x, const Column& y) {
  const std::size_t n = x.size();
  return {dot(x.re.data(), y.re.data(), n) + dot(x.im.data(), y.im.data(), n),
          dot(x.re.data(), y.im.data(), n) - dot(x.im.data(), y.re.data(), n)};
}

double length(const Column& x) {
  return std::hypot(euclidean(x.re), euclidean(x.im));
}

// y := y - a x.
void subtract(Column& y, const Complex& a, const Column& x) {
  for (std::size_t i = 0; i < y.size(); ++i) {
    y.re[i] -= a.real() * x.re[i] - a.imag() * x.im[i];
    y.im[i] -= a.real() * x.im[i] + a.imag() * x.re[i];
  }
}

double size_of(const Parts& A) {
  return std::hypot(frobenius(A.re), frobenius(A.im));
}

// ‖A v - ρ v‖ with the quotient of Rayleigh, which *rho takes; and how far v is from length 1.
double residual(const Parts& A, const Column& v, Complex* rho) {
  Column w = product(A, v);
  const double squared = std::norm(Complex(length(v), 0.0));
  *rho = squared == 0.0 ? Complex(0.0) : inner(v, w) / squared;
  subtract(w, *rho, v);
  return length(w);
}

}  // namespace

// ‖A v - ρ v‖ / ‖A‖ for each column, as LAPACK's tests measure them.
Verdict check_eigenvecs(const Request& r) {
  Parts A = parts_of(matrix_at(r, 0));
  const Parts V = parts_of(result_matrix(r));
  normalize(A);
  const double size = std::max(size_of(A), 0x1p-1000);
  double error = 0.0;
  int bad = 0;
  for (int j = 0; j < V.re.cols; ++j) {
    const Column v = column_of(V, j);
    Complex rho;
    const double off = std::fabs(length(v) - 1.0);
    const double here = std::max(off, residual(A, v, &rho) / size);
    bad += here > 1e-6 ? 1 : 0;
    error = std::max(error, here);
    poll(r.stop);
  }
  return {.error = error,
          .cause = fmt::format("{} of {} columns {} not solve A v = z v", bad, V.re.cols,
                               bad == 1 ? "does" : "do")};
}

Verdict check_eigenvec(const Request& r) {
  Parts A = parts_of(matrix_at(r, 0));
  const auto* const z = static_cast<const aComplex*>(r.arguments[1]);
  const int power = normalize(A);
  const double size = std::max(size_of(A), 0x1p-1000);
  const Column v = column_of(parts_of(result_matrix(r)), 0);
  Complex rho;
  const double error = std::max(residual(A, v, &rho) / size, std::fabs(length(v) - 1.0));
  Verdict verdict = {.error = error, .cause = "the column does not solve A v = z v"};
  const Complex wanted(std::ldexp(z->re, power), std::ldexp(z->im, power));
  if (std::abs(rho - wanted) > 1e-6 * size)
    verdict.note =
        fmt::format("the vector belongs to the eigenvalue {:.6g}{}, not to the number given",
                    std::ldexp(rho.real(), -power),
                    std::fabs(rho.imag()) <= 1e-12 * size
                        ? ""
                        : fmt::format("{:+.6g}i", std::ldexp(rho.imag(), -power)));
  return verdict;
}

// The smallest singular value of [M x / ‖M‖, N x / ‖N‖]: how far the pencil is from one that has
// the vector (the backward error of the QZ method).
Verdict check_genvecs(const Request& r) {
  Parts M = parts_of(matrix_at(r, 0)), N = parts_of(matrix_at(r, 1));
  const Parts X = parts_of(result_matrix(r));
  normalize(M);
  normalize(N);
  const double of_M = std::max(size_of(M), 0x1p-1000), of_N = std::max(size_of(N), 0x1p-1000);
  double error = 0.0;
  int bad = 0;
  for (int j = 0; j < X.re.cols; ++j) {
    const Column x = column_of(X, j);
    Column u = product(M, x), w = product(N, x);
    // The longer one, and what of the other is not along it.
    const bool is_M_longer = length(u) / of_M >= length(w) / of_N;
    if (!is_M_longer) std::swap(u, w);
    const double squared = std::norm(Complex(length(u), 0.0));
    if (squared > 0.0) subtract(w, inner(u, w) / squared, u);
    const double apart = length(w) / (is_M_longer ? of_N : of_M);
    const double here = std::max(apart, std::fabs(length(x) - 1.0));
    bad += here > 1e-6 ? 1 : 0;
    error = std::max(error, here);
    poll(r.stop);
  }
  return {.error = error,
          .cause = fmt::format("{} of {} columns {} not solve M x = z N x", bad, X.re.cols,
                               bad == 1 ? "does" : "do")};
}

}  // namespace audit
