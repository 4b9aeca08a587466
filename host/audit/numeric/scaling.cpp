// The part of matrix.hpp that scales.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "host/audit/numeric/matrix.hpp"

namespace audit {

int exponent(double x) {
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
  for (int j = 0; j < A.cols; ++j) {
    const int of_column = cols.empty() ? 0 : cols[static_cast<std::size_t>(j)];
    for (int i = 0; i < A.rows; ++i)
      A(i, j) = scaled(A(i, j), of_column + (rows.empty() ? 0 : rows[static_cast<std::size_t>(i)]));
  }
}

namespace {

// The exponents of the elements, less or more those of their rows and columns: the largest of each
// row, or column.
void largest_exponents(const std::vector<int>& e, int m, const Equilibration& by, Exponents& rows,
                       Exponents& cols) {
  std::fill(rows.begin(), rows.end(), kZeroExponent);
  std::fill(cols.begin(), cols.end(), kZeroExponent);
  for (std::size_t j = 0; j < cols.size(); ++j)
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const int given = e[j * static_cast<std::size_t>(m) + i];
      if (given == kZeroExponent) continue;
      const int x = given + by.rows[i] + by.cols[j];
      rows[i] = std::max(rows[i], x);
      cols[j] = std::max(cols[j], x);
    }
}

// by := by - most / divisor; rows and columns of zeros stay.
void reduce(Exponents& by, const Exponents& most, int divisor) {
  for (std::size_t k = 0; k < by.size(); ++k)
    if (most[k] != kZeroExponent) by[k] -= most[k] / divisor;
}

}  // namespace

Equilibration equilibrate(Matrix& A) {
  constexpr int kMostSweeps = 12;
  std::vector<int> e(A.elements.size());
  std::transform(A.elements.begin(), A.elements.end(), e.begin(),
                 [](double x) { return exponent(x); });
  Exponents rows(static_cast<std::size_t>(A.rows)), cols(static_cast<std::size_t>(A.cols));
  Equilibration by = {Exponents(rows.size()), Exponents(cols.size())};
  const auto is_even = [](const Exponents& most) {
    return std::all_of(most.begin(), most.end(),
                       [](int x) { return x == kZeroExponent || std::abs(x) <= 1; });
  };
  for (int sweep = 0; sweep < kMostSweeps; ++sweep) {
    largest_exponents(e, A.rows, by, rows, cols);
    if (is_even(rows) && is_even(cols)) break;
    reduce(by.rows, rows, 2);
    reduce(by.cols, cols, 2);
  }
  // No element is above 2: first the rows, then what that leaves in the columns.
  largest_exponents(e, A.rows, by, rows, cols);
  reduce(by.rows, rows, 1);
  largest_exponents(e, A.rows, by, rows, cols);
  reduce(by.cols, cols, 1);
  scale(A, by.rows, by.cols);
  return by;
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
