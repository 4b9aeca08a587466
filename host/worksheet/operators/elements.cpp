#include "host/worksheet/operators/elements.hpp"

#include <cmath>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"

namespace worksheet {

namespace {

// Integer powers up to this one are products: exact where the products are.
constexpr double kMostRepeatedProducts = 64;

// The comparisons that all numbers have, and logic.
template <class T>
double truth_result(Operator op, const T& a, const T& b) {
  switch (op) {
    case Operator::equal:
      return truth(a == b);
    case Operator::both:
      return truth(a != 0.0 && b != 0.0);
    case Operator::either:
      return truth(a != 0.0 || b != 0.0);
    default:
      return truth(a != b);
  }
}

double real_result(Operator op, double a, double b) {
  switch (op) {
    case Operator::add:
      return a + b;
    case Operator::subtract:
      return a - b;
    case Operator::multiply:
      return a * b;
    case Operator::divide:
      return a / b;
    case Operator::power:
      return std::pow(a, b);
    case Operator::less:
      return truth(a < b);
    case Operator::less_equal:
      return truth(a <= b);
    case Operator::greater:
      return truth(a > b);
    case Operator::greater_equal:
      return truth(a >= b);
    default:
      return truth_result(op, a, b);
  }
}

// Whether the operator gives a real number for real operands.
bool stays_real(Operator op, double a, double b) {
  return op != Operator::power || a >= 0.0 || std::isnan(a) || std::floor(b) == b;
}

Number complex_result(Operator op, const Number& a, const Number& b) {
  switch (op) {
    case Operator::add:
      return a + b;
    case Operator::subtract:
      return a - b;
    case Operator::multiply:
      return a.imag() == 0.0 ? a.real() * b : b.imag() == 0.0 ? a * b.real() : a * b;
    case Operator::divide:
      return b.imag() == 0.0 ? a / b.real() : a / b;
    case Operator::power:
      return power(a, b);
    default:
      return truth_result(op, a, b);
  }
}

}  // namespace

Operator for_elements(Operator op) {
  if (op == Operator::each_multiply) return Operator::multiply;
  if (op == Operator::each_divide) return Operator::divide;
  return op == Operator::each_power ? Operator::power : op;
}

Number element_result(Operator op, const Number& a, const Number& b) {
  if (a.imag() == 0.0 && b.imag() == 0.0 && stays_real(op, a.real(), b.real()))
    return real_result(op, a.real(), b.real());
  return complex_result(op, a, b);
}

bool elements_fit(Operator op, const aMatrix* a, const aMatrix* b) {
  if (for_elements(op) == op) return same_shape(a, b);
  return (a->rows == b->rows || a->rows == 1 || b->rows == 1) &&
         (a->cols == b->cols || a->cols == 1 || b->cols == 1);
}

namespace {

// An operand of an elementwise operation: a matrix, or a number that stands for every element.
struct Operand {
  explicit Operand(const Value& v)
      : m(is_matrix(v) ? matrix(v) : nullptr), z(m == nullptr ? number(v) : Number()) {}
  bool complex() const { return m != nullptr ? m->im != nullptr : z.imag() != 0.0; }
  double re(std::ptrdiff_t k) const { return m != nullptr ? re_at(m, k) : z.real(); }
  double im(std::ptrdiff_t k) const { return m != nullptr ? im_at(m, k) : z.imag(); }
  Number at(std::ptrdiff_t k) const { return {re(k), im(k)}; }

  const aMatrix* m;
  Number z;
};

// The extent of a result of two: that which is not 1.
std::ptrdiff_t extent(std::int32_t a, std::int32_t b) {
  return a == 1 ? b : a;
}

// A row or a column beside another shape.
Value repeated(Machine& machine, Operator op, const aMatrix* a, const aMatrix* b) {
  MatrixBuilder result(extent(a->rows, b->rows), extent(a->cols, b->cols));
  auto place = [](const aMatrix* m, std::ptrdiff_t i, std::ptrdiff_t j) {
    return (m->cols == 1 ? 0 : j * m->rows) + (m->rows == 1 ? 0 : i);
  };
  const Operand x(object_value(const_cast<aMatrix*>(a))), y(object_value(const_cast<aMatrix*>(b)));
  for (std::ptrdiff_t j = 0; j < result.cols(); ++j)
    for (std::ptrdiff_t i = 0; i < result.rows(); ++i)
      result.set(j * result.rows() + i,
                 element_result(op, x.at(place(a, i, j)), y.at(place(b, i, j))));
  return object_value(result.finish(machine.store));
}

}  // namespace

Value elementwise(Machine& machine, Operator op, const Value& a, const Value& b) {
  op = for_elements(op);
  const Operand x(a), y(b);
  if (x.m != nullptr && y.m != nullptr && !same_shape(x.m, y.m))
    return repeated(machine, op, x.m, y.m);
  const aMatrix* const shape = x.m != nullptr ? x.m : y.m;
  MatrixBuilder result(shape->rows, shape->cols);
  const std::ptrdiff_t count = element_count(shape);
  if (x.complex() || y.complex() || op == Operator::power) {
    for (std::ptrdiff_t k = 0; k < count; ++k) result.set(k, element_result(op, x.at(k), y.at(k)));
  } else {
    double* const re = result.re();
    for (std::ptrdiff_t k = 0; k < count; ++k) re[k] = real_result(op, x.re(k), y.re(k));
  }
  return object_value(result.finish(machine.store));
}

Number power(const Number& a, const Number& b) {
  if (a.imag() == 0.0 && b.imag() == 0.0 && stays_real(Operator::power, a.real(), b.real()))
    return std::pow(a.real(), b.real());
  const double n = b.real();
  if (b.imag() == 0.0 && std::floor(n) == n && std::fabs(n) <= kMostRepeatedProducts) {
    Number result = 1.0;
    for (int k = 0; k < static_cast<int>(std::fabs(n)); ++k) result *= a;
    return n < 0.0 ? 1.0 / result : result;
  }
  if (a == 0.0) return b.real() > 0.0 ? Number(0.0) : std::pow(a, b);
  return std::exp(b * std::log(a));
}

}  // namespace worksheet
