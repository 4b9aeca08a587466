#include "host/worksheet/report/number_markup.hpp"

#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/worksheet/output/number_text.hpp"

namespace worksheet {

std::string row_markup(const std::string& content) {
  return "<mrow>" + content + "</mrow>";
}

namespace {

constexpr const char* kMinus = "<mo form=\"prefix\">\u2212</mo>";

// The widths of characters and of the space around a cell, in em.
constexpr double kDigit = 0.5, kSmallDigit = 0.36, kTimesTen = 2.0, kAroundCell = 1.1;
constexpr double kSignAndUnit = 1.8;  // Of an imaginary part.

std::string hidden(const std::string& content) {
  return "<mphantom>" + content + "</mphantom>";
}

std::string hidden_digits(std::size_t count) {
  return count == 0 ? "" : hidden(fmt::format("<mn>{}</mn>", std::string(count, '0')));
}

// That many characters of a fraction, the last ones.
std::string hidden_fraction(std::size_t count, bool with_point) {
  if (count == 0) return {};
  std::string text(count, '0');
  if (with_point) text[0] = '.';
  return hidden(fmt::format("<mn>{}</mn>", text));
}

std::string times_power(const std::string& exponent) {
  return fmt::format("<mo>\u00D7</mo><msup><mn>10</mn><mrow>{}</mrow></msup>", exponent);
}

}  // namespace

// A real number without its sign, cut at its point and its exponent.
struct NumberColumn::Real {
  std::string word;  // What is no number.
  std::string whole, fraction, exponent;
  bool negative_exponent = false;

  Real(double x, const NumberFormat& format) {
    if (std::isnan(x)) word = "<mi>NaN</mi>";
    if (std::isinf(x)) word = "<mo>\u221E</mo>";
    if (!word.empty()) return;
    const std::string text = number_text(std::fabs(x), format);
    const std::size_t e = std::min(text.find('e'), text.size());
    const std::size_t point = std::min(text.find('.'), e);
    whole = text.substr(0, point);
    fraction = text.substr(point, e - point);
    if (e == text.size()) return;
    const int power = std::stoi(text.substr(e + 1));
    negative_exponent = power < 0;
    exponent = std::to_string(std::abs(power));
  }
};

void NumberColumn::widen(Widths& widths, const Real& part) {
  widths.whole = std::max(widths.whole, part.whole.size());
  widths.fraction = std::max(widths.fraction, part.fraction.size());
  widths.exponent = std::max(widths.exponent, part.exponent.size());
  widths.negative = widths.negative || part.negative_exponent;
}

void NumberColumn::take(const Number& z) {
  if (z.real() != 0.0 || z.imag() == 0.0) widen(re_, Real(z.real(), format_));
  if (z.imag() == 0.0) return;
  widen(im_, Real(z.imag(), format_));
  has_im_ = true;
}

void NumberColumn::reserve(double width) {
  reserved_ = std::max(reserved_, width);
}

double NumberColumn::width(const Widths& widths) {
  return static_cast<double>(widths.whole + widths.fraction) * kDigit +
         (widths.exponent == 0
              ? 0.0
              : kTimesTen + static_cast<double>(widths.exponent + widths.negative) * kSmallDigit);
}

double NumberColumn::width() const {
  const double numbers = kDigit + width(re_) + (has_im_ ? kSignAndUnit + width(im_) : 0.0);
  return std::max(numbers, reserved_) + kAroundCell;
}

std::string NumberColumn::magnitude(const Real& part, const Widths& widths) {
  if (!part.word.empty()) return part.word;
  const std::string digits = fmt::format("<mn>{}{}</mn>", part.whole, part.fraction);
  if (part.exponent.empty()) return digits;
  const std::size_t missing = widths.exponent - std::min(widths.exponent, part.exponent.size());
  return digits + times_power((part.negative_exponent ? kMinus : "") +
                              fmt::format("<mn>{}</mn>", part.exponent) + hidden_digits(missing) +
                              (widths.negative && !part.negative_exponent ? hidden(kMinus) : ""));
}

// What stands behind a part that is shorter than others behind its point.
std::string NumberColumn::padding(const Real& part, const Widths& widths) {
  const std::size_t missing = widths.fraction - std::min(widths.fraction, part.fraction.size());
  std::string result = hidden_fraction(missing, part.fraction.empty());
  if (widths.exponent > 0 && part.exponent.empty())
    result += hidden(
        row_markup(times_power((widths.negative ? kMinus : "") +
                               fmt::format("<mn>{}</mn>", std::string(widths.exponent, '0')))));
  return result;
}

std::string NumberColumn::markup(const Number& z) const {
  auto is_negative = [](double x) { return std::signbit(x) && x != 0.0 && !std::isnan(x); };
  const bool shows_re = z.real() != 0.0 || z.imag() == 0.0;
  std::string result;
  if (shows_re) {
    const Real re(z.real(), format_);
    result = (is_negative(z.real()) ? kMinus : "") + magnitude(re, re_) + padding(re, re_);
  }
  if (z.imag() == 0.0) {
    if (!has_im_) return row_markup(result);
    const Real none(0.0, format_);
    return row_markup(
        result +
        hidden(row_markup("<mo form=\"infix\">+</mo>" + hidden_digits(im_.whole) + "<mi>i</mi>")) +
        hidden_fraction(im_.fraction, true) + padding(none, {0, 0, im_.exponent, im_.negative}));
  }
  const Real im(z.imag(), format_);
  const std::size_t missing = im_.whole - std::min(im_.whole, im.whole.size());
  const std::string sign =
      !shows_re ? (is_negative(z.imag()) ? kMinus : "")
                : fmt::format("<mo form=\"infix\">{}</mo>", is_negative(z.imag()) ? "\u2212" : "+");
  return row_markup(result + (shows_re ? hidden_digits(missing) : "") + sign + magnitude(im, im_) +
                    "<mi>i</mi>" + padding(im, im_));
}

}  // namespace worksheet
