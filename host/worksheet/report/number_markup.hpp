// Numbers as MathML, aligned by their points.
#pragma once

#include <cstddef>
#include <string>

#include "host/text/number_format.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

// What stands side by side, as one.
std::string row_markup(const std::string& content);

// The numbers of one column, which stand flush right: what the longest has behind its point, the
// others have as invisible digits. A column of nothing pads nothing.
class NumberColumn {
 public:
  explicit NumberColumn(const NumberFormat& format) : format_(format) {}

  // Makes room for a number, or for something else of that width.
  void take(const Number& z);
  void reserve(double width);

  // The number, padded.
  std::string markup(const Number& z) const;

  // What the column takes of a line, about, in em.
  double width() const;

 private:
  // The extents of a part of the numbers, in characters.
  struct Widths {
    std::size_t whole = 0;     // Before the point,
    std::size_t fraction = 0;  // from it on,
    std::size_t exponent = 0;  // and the digits of the exponent;
    bool negative = false;     // whether an exponent has a sign.
  };
  struct Real;

  static void widen(Widths& widths, const Real& part);
  static std::string magnitude(const Real& part, const Widths& widths);
  static std::string padding(const Real& part, const Widths& widths);
  static double width(const Widths& widths);

  NumberFormat format_;
  Widths re_, im_;
  bool has_im_ = false;
  double reserved_ = 0.0;
};

}  // namespace worksheet
