#include "host/worksheet/output/number_text.hpp"

#include <cmath>

#include "fmt/format.h"

namespace worksheet {

namespace {

std::string real_text(double x, int digits) {
  if (std::isnan(x)) return "nan";
  if (std::isinf(x)) return x > 0.0 ? "inf" : "-inf";
  return fmt::format("{:.{}g}", x == 0.0 ? 0.0 : x, digits);
}

}  // namespace

std::string number_text(const Number& z, int digits) {
  const std::string re = real_text(z.real(), digits);
  if (z.imag() == 0.0) return re;
  const std::string im = real_text(std::fabs(z.imag()), digits) + "i";
  const bool minus = std::signbit(z.imag());
  if (z.real() == 0.0) return minus ? fmt::format("-{}", im) : im;
  return re + (minus ? " - " : " + ") + im;
}

}  // namespace worksheet
