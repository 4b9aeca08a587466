#include "host/worksheet/functions/elementary.hpp"

#include <cmath>
#include <numbers>

#include "host/worksheet/functions/elementwise.hpp"

namespace worksheet {

namespace {

// As an argument of a complex function: on a cut, the side of positive imaginary parts counts.
Number beside_cut(const Number& z) {
  return is_real(z) ? Number(z.real(), 0.0) : z;
}

bool is_within_one(const Number& z) {
  return is_real(z) && !(std::fabs(z.real()) > 1.0);
}

bool is_not_negative(const Number& z) {
  return is_real(z) && !(z.real() < 0.0);
}

// A logarithm of the gamma function where the real part of z is at least 1/2: the series of Lanczos
// with g = 7 and nine terms.
Number log_gamma(const Number& z) {
  constexpr double kTerms[] = {676.5203681218851,     -1259.1392167224028,  771.32342877765313,
                               -176.61502916214059,   12.507343278686905,   -0.13857109526572012,
                               9.9843695780195716e-6, 1.5056327351493116e-7};
  Number sum = 0.99999999999980993;
  for (int k = 0; k < 8; ++k) sum += kTerms[k] / (z + static_cast<double>(k));
  const Number t = z + 6.5;
  return 0.5 * std::log(2.0 * std::numbers::pi) + (z - 0.5) * std::log(t) - t + std::log(sum);
}

}  // namespace

Number square_root(const Number& z) {
  if (!is_real(z)) return std::sqrt(z);
  return z.real() < 0.0 ? Number(0.0, std::sqrt(-z.real())) : Number(std::sqrt(z.real()));
}

Number exponential(const Number& z) {
  return is_real(z) ? Number(std::exp(z.real())) : std::exp(z);
}

Number logarithm(const Number& z) {
  return is_not_negative(z) ? Number(std::log(z.real())) : std::log(beside_cut(z));
}

Number logarithm_2(const Number& z) {
  return is_not_negative(z) ? Number(std::log2(z.real()))
                            : std::log(beside_cut(z)) / std::numbers::ln2;
}

Number logarithm_10(const Number& z) {
  return is_not_negative(z) ? Number(std::log10(z.real())) : std::log10(beside_cut(z));
}

Number sine(const Number& z) {
  return is_real(z) ? Number(std::sin(z.real())) : std::sin(z);
}

Number cosine(const Number& z) {
  return is_real(z) ? Number(std::cos(z.real())) : std::cos(z);
}

Number tangent(const Number& z) {
  return is_real(z) ? Number(std::tan(z.real())) : std::tan(z);
}

Number arc_sine(const Number& z) {
  return is_within_one(z) ? Number(std::asin(z.real())) : std::asin(beside_cut(z));
}

Number arc_cosine(const Number& z) {
  return is_within_one(z) ? Number(std::acos(z.real())) : std::acos(beside_cut(z));
}

Number arc_tangent(const Number& z) {
  return is_real(z) ? Number(std::atan(z.real())) : std::atan(z);
}

Number hyperbolic_sine(const Number& z) {
  return is_real(z) ? Number(std::sinh(z.real())) : std::sinh(z);
}

Number hyperbolic_cosine(const Number& z) {
  return is_real(z) ? Number(std::cosh(z.real())) : std::cosh(z);
}

Number hyperbolic_tangent(const Number& z) {
  return is_real(z) ? Number(std::tanh(z.real())) : std::tanh(z);
}

Number area_sine(const Number& z) {
  return is_real(z) ? Number(std::asinh(z.real())) : std::asinh(z);
}

Number area_cosine(const Number& z) {
  const bool has_real_value = is_real(z) && !(z.real() < 1.0);
  return has_real_value ? Number(std::acosh(z.real())) : std::acosh(beside_cut(z));
}

Number area_tangent(const Number& z) {
  return is_within_one(z) ? Number(std::atanh(z.real())) : std::atanh(beside_cut(z));
}

Number magnitude(const Number& z) {
  return is_real(z) ? std::fabs(z.real()) : std::abs(z);
}

Number argument(const Number& z) {
  if (z == 0.0) return 0.0;
  return std::arg(beside_cut(z));
}

Number sign(const Number& z) {
  if (!is_real(z)) return z / std::abs(z);
  if (std::isnan(z.real())) return z;
  return static_cast<double>(z.real() > 0.0) - static_cast<double>(z.real() < 0.0);
}

Number gamma_function(const Number& z) {
  if (is_real(z)) return Number(std::tgamma(z.real()));
  if (!(z.real() < 0.5)) return std::exp(log_gamma(z));
  // By reflection. Far from the real axis the sine is one power of e, which may overflow.
  const Number angle = std::numbers::pi * z;
  const double side = std::copysign(1.0, z.imag());
  const Number log_sine =
      std::fabs(z.imag()) < 10.0
          ? std::log(std::sin(angle))
          : Number(-std::numbers::ln2, side * std::numbers::pi / 2) - Number(0.0, side) * angle;
  return std::exp(std::log(std::numbers::pi) - log_sine - log_gamma(1.0 - z));
}

Number real_part(const Number& z) {
  return z.real();
}

Number imaginary_part(const Number& z) {
  return z.imag();
}

Number conjugate(const Number& z) {
  return {z.real(), is_real(z) ? 0.0 : -z.imag()};
}

double whole_below(double x) {
  return std::floor(x);
}

double whole_above(double x) {
  return std::ceil(x);
}

double nearest_whole(double x) {
  return std::round(x);
}

double whole_towards_zero(double x) {
  return std::trunc(x);
}

double angle_of(double y, double x) {
  return std::atan2(y, x);
}

double hypotenuse(double x, double y) {
  return std::hypot(x, y);
}

double modulo(double x, double y) {
  const double remainder = std::fmod(x, y);
  return remainder != 0.0 && (remainder < 0.0) != (y < 0.0) ? remainder + y : remainder;
}

double larger(double x, double y) {
  return x > y || std::isnan(x) ? x : y;
}

double smaller(double x, double y) {
  return x < y || std::isnan(x) ? x : y;
}

}  // namespace worksheet
