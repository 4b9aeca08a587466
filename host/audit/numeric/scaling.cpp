// The part of matrix.hpp that scales.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "host/audit/numeric/matrix.hpp"

namespace audit {

namespace {

constexpr int kBias = 1023, kFieldMask = 0x7FF, kFractionBits = 52;

}  // namespace

int exponent(double x) {
  const auto field =
      static_cast<int>(std::bit_cast<std::uint64_t>(x) >> kFractionBits) & kFieldMask;
  if (field != 0 && field != kFieldMask) return field - kBias;
  return x == 0.0 ? kZeroExponent : std::ilogb(x);
}

namespace {

constexpr int kSafe = 1000;  // 2 to this power and to its negative are normal numbers.

// x 2^power, rounded only below the normal numbers.
double scaled(double x, int power) {
  return std::abs(power) <= kSafe ? x * std::ldexp(1.0, power) : std::ldexp(x, power);
}

}  // namespace

void scale(Vector& x, int power) {
  if (std::abs(power) > kSafe) {
    for (double& a : x) a = std::ldexp(a, power);
    return;
  }
  const double factor = std::ldexp(1.0, power);
  for (double& a : x) a *= factor;
}

void scale(Matrix& A, int power) {
  scale(A.elements, power);
}

int normalize(Matrix& A) {
  const double most = largest(A);
  const int power = most == 0.0 ? 0 : -exponent(most);
  scale(A, power);
  return power;
}

int normalize(Parts& m) {
  const double most = std::max(largest(m.re), largest(m.im));
  const int power = most == 0.0 ? 0 : -exponent(most);
  scale(m.re, power);
  scale(m.im, power);
  return power;
}

void scale(Matrix& A, const Exponents& rows, const Exponents& cols) {
  const auto m = static_cast<std::size_t>(A.rows);
  const auto row = [&](std::size_t i) { return rows.empty() ? 0 : rows[i]; };
  int most = 0;
  for (const int e : rows) most = std::max(most, std::abs(e));
  // Factors serve where no product of them leaves the range of numbers.
  Vector factors(most <= kSafe ? m : 0);
  for (std::size_t i = 0; i < factors.size(); ++i) factors[i] = std::ldexp(1.0, row(i));
  for (int j = 0; j < A.cols; ++j) {
    const int of_column = cols.empty() ? 0 : cols[static_cast<std::size_t>(j)];
    double* const a = A.column(j);
    if (most + std::abs(of_column) <= kSafe) {
      const double factor = std::ldexp(1.0, of_column);
      for (std::size_t i = 0; i < m; ++i) a[i] *= factors[i] * factor;
    } else {
      for (std::size_t i = 0; i < m; ++i) a[i] = scaled(a[i], of_column + row(i));
    }
  }
}

namespace {

// Exponents of elements as small numbers, of which a processor takes many at once. With those of
// rows and columns added they stay far from the ends; of a zero they stay below all others.
using SmallExponents = std::vector<std::int16_t, Scratch<std::int16_t>>;
constexpr std::int16_t kSmallZero = -20000;

std::int16_t small_exponent(double x) {
  return x == 0.0 ? kSmallZero : static_cast<std::int16_t>(exponent(x));
}

// e[i] := the exponent of x[i], for finite x.
void small_exponents(const double* x, std::size_t n, std::int16_t* e) {
  std::int16_t least = 1;
  for (std::size_t i = 0; i < n; ++i) {
    e[i] = static_cast<std::int16_t>((std::bit_cast<std::uint64_t>(x[i]) >> kFractionBits) &
                                     kFieldMask);
    least = std::min(least, e[i]);
  }
  if (least > 0)
    for (std::size_t i = 0; i < n; ++i) e[i] = static_cast<std::int16_t>(e[i] - kBias);
  else
    std::transform(x, x + n, e, small_exponent);
}

SmallExponents small_exponents(const Matrix& A) {
  SmallExponents e(A.elements.size());
  small_exponents(A.elements.data(), e.size(), e.data());
  return e;
}

// The exponents of the elements, with those of their rows and columns added: the largest of each
// row, and column.
void largest_exponents(const SmallExponents& e, const Equilibration& by, Exponents& rows,
                       Exponents& cols) {
  const std::size_t n = rows.size();
  std::vector<std::int16_t> of_rows(n, kSmallZero), up(by.rows.begin(), by.rows.end());
  for (std::size_t j = 0; j < cols.size(); ++j) {
    const std::int16_t* const given = e.data() + j * n;
    const int of_column = by.cols[j];
    std::int16_t most = kSmallZero;
    for (std::size_t i = 0; i < n; ++i) {
      const auto x = static_cast<std::int16_t>(given[i] + up[i] + of_column);
      of_rows[i] = std::max(of_rows[i], x);
      most = std::max(most, x);
    }
    cols[j] = most;
  }
  std::copy(of_rows.begin(), of_rows.end(), rows.begin());
  for (Exponents* of : {&rows, &cols})
    for (int& x : *of)
      if (x < kSmallZero / 2) x = kZeroExponent;
}

// by := by - most / divisor; rows and columns of zeros stay.
void reduce(Exponents& by, const Exponents& most, int divisor) {
  for (std::size_t k = 0; k < by.size(); ++k)
    if (most[k] != kZeroExponent) by[k] -= most[k] / divisor;
}

}  // namespace

namespace {

// The same from the elements' exponents.
Equilibration equilibration(const SmallExponents& e, int m, int n) {
  constexpr int kMostSweeps = 12;
  Exponents rows(static_cast<std::size_t>(m)), cols(static_cast<std::size_t>(n));
  Equilibration by = {Exponents(rows.size()), Exponents(cols.size())};
  const auto is_even = [](const Exponents& most) {
    return std::all_of(most.begin(), most.end(),
                       [](int x) { return x == kZeroExponent || std::abs(x) <= 1; });
  };
  for (int sweep = 0; sweep < kMostSweeps; ++sweep) {
    largest_exponents(e, by, rows, cols);
    if (is_even(rows) && is_even(cols)) break;
    reduce(by.rows, rows, 2);
    reduce(by.cols, cols, 2);
  }
  // No element is above 2: first the rows, then what that leaves in the columns.
  largest_exponents(e, by, rows, cols);
  reduce(by.rows, rows, 1);
  largest_exponents(e, by, rows, cols);
  reduce(by.cols, cols, 1);
  return by;
}

}  // namespace

Equilibration equilibrate(Matrix& A) {
  const Equilibration by = equilibration(small_exponents(A), A.rows, A.cols);
  scale(A, by.rows, by.cols);
  return by;
}

int largest_exponent(const Matrix& A, const Exponents& rows, const Exponents& cols) {
  Exponents of_rows(rows.size()), of_cols(cols.size());
  largest_exponents(small_exponents(A), {rows, cols}, of_rows, of_cols);
  return of_cols.empty() ? kZeroExponent : *std::max_element(of_cols.begin(), of_cols.end());
}

Equilibration equilibration(const aMatrix* m) {
  const auto rows = static_cast<std::size_t>(m->rows);
  SmallExponents e(rows * static_cast<std::size_t>(m->cols), kSmallZero), of_column(rows);
  for (const double* part : {m->re, m->im}) {
    if (part == nullptr) continue;
    std::int16_t* to = e.data();
    for (int j = 0; j < m->cols; ++j, to += rows) {
      const double* const a = part + static_cast<std::ptrdiff_t>(j) * m->leading_dimension;
      small_exponents(a, rows, of_column.data());
      for (std::size_t i = 0; i < rows; ++i) to[i] = std::max(to[i], of_column[i]);
    }
  }
  return equilibration(e, m->rows, m->cols);
}

namespace {

// y := y + x D a for a column a, where D has the powers of two 2^(rows[i] + col).
void add_scaled(const double* a, const Exponents& rows, const Vector& factors, int col, double x,
                std::size_t m, double* y) {
  if (factors.size() == m && std::abs(col) <= kSafe / 2) {
    const double factor = std::ldexp(x, col);
    for (std::size_t i = 0; i < m; ++i) y[i] += a[i] * (factors[i] * factor);
  } else {
    for (std::size_t i = 0; i < m; ++i) y[i] += scaled(a[i], rows[i] + col) * x;
  }
}

}  // namespace

Vector scaled_product(const aMatrix* A, const Exponents& rows, const Exponents& cols,
                      const Vector& x) {
  const auto m = static_cast<std::size_t>(A->rows), n = static_cast<std::size_t>(A->cols);
  const bool complex = x.size() > n;
  Vector y(complex ? 2 * m : m), factors;
  if (std::all_of(rows.begin(), rows.end(), [](int e) { return std::abs(e) <= kSafe / 2; }))
    for (const int e : rows) factors.push_back(std::ldexp(1.0, e));
  for (std::size_t j = 0; j < n; ++j) {
    const auto at = static_cast<std::ptrdiff_t>(j) * A->leading_dimension;
    const auto add = [&](const double* part, double by, double* to) {
      if (part != nullptr && by != 0.0) add_scaled(part + at, rows, factors, cols[j], by, m, to);
    };
    add(A->re, x[j], y.data());
    if (!complex) continue;
    add(A->re, x[n + j], y.data() + m);
    add(A->im, -x[n + j], y.data());
    add(A->im, x[j], y.data() + m);
  }
  return y;
}

Exponents column_exponents(const Matrix& A) {
  Exponents result;
  for (int j = 0; j < A.cols; ++j) {
    double most = 0.0;
    for (int i = 0; i < A.rows; ++i) most = std::max(most, std::fabs(A(i, j)));
    result.push_back(most == 0.0 ? 0 : -exponent(most));
  }
  return result;
}

Exponents row_exponents(const Matrix& A) {
  Vector most(static_cast<std::size_t>(A.rows));
  for (int j = 0; j < A.cols; ++j)
    for (std::size_t i = 0; i < most.size(); ++i)
      most[i] = std::max(most[i], std::fabs(A.column(j)[i]));
  Exponents result;
  for (const double x : most) result.push_back(x == 0.0 ? 0 : -exponent(x));
  return result;
}

double largest(const Vector& x, const Exponents& e, int shift) {
  double most = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double a = std::fabs(std::ldexp(x[i], e[i] - shift));
    if (!(a <= most)) most = a;
  }
  return most;
}

int exponent(const Vector& x, const Exponents& e) {
  int most = kZeroExponent;
  for (std::size_t i = 0; i < x.size(); ++i)
    if (x[i] != 0.0) most = std::max(most, exponent(x[i]) + e[i]);
  return most;
}

}  // namespace audit
