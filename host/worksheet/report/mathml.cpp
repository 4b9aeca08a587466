#include "host/worksheet/report/mathml.hpp"

#include <cmath>
#include <string_view>

#include "fmt/format.h"
#include "host/packs/unit.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/variable.hpp"
#include "host/worksheet/output/matrix_text.hpp"
#include "host/worksheet/output/number_text.hpp"
#include "host/worksheet/output/printed_size.hpp"
#include "host/worksheet/report/markup.hpp"

namespace worksheet {

namespace {

// Longer and wider matrices are elided.
constexpr int kMostRows = 16;
constexpr int kMostCols = 8;

constexpr const char* kMinus = "<mo form=\"prefix\">\u2212</mo>";

// Before a unit; twice behind a bracket.
constexpr const char* kUnitSpace = "<mspace width=\"0.25em\"/>";

std::string row(const std::string& content) {
  return "<mrow>" + content + "</mrow>";
}

// A real number without its sign.
std::string magnitude_markup(double x, int digits) {
  if (std::isnan(x)) return "<mi>NaN</mi>";
  if (std::isinf(x)) return "<mo>\u221E</mo>";
  const std::string text = number_text(std::fabs(x), digits);
  const std::size_t e = text.find('e');
  if (e == std::string::npos) return fmt::format("<mn>{}</mn>", text);
  const int exponent = std::stoi(text.substr(e + 1));
  return fmt::format("<mn>{}</mn><mo>\u00D7</mo><msup><mn>10</mn><mrow>{}<mn>{}</mn></mrow></msup>",
                     text.substr(0, e), exponent < 0 ? kMinus : "", std::abs(exponent));
}

std::string real_markup(double x, int digits) {
  const bool minus = std::signbit(x) && x != 0.0 && !std::isnan(x);
  return (minus ? kMinus : "") + magnitude_markup(x, digits);
}

std::string number_markup(const Number& z, int digits) {
  if (z.imag() == 0.0) return row(real_markup(z.real(), digits));
  const std::string im = magnitude_markup(z.imag(), digits) + "<mi>i</mi>";
  const bool minus = std::signbit(z.imag());
  if (z.real() == 0.0) return row((minus ? kMinus : "") + im);
  return row(real_markup(z.real(), digits) +
             fmt::format("<mo form=\"infix\">{}</mo>", minus ? "\u2212" : "+") + im);
}

// A unit's name, its powers raised: "kN/m^2", "1/(m s^(1/2))".
std::string unit_markup(const Unit& unit) {
  std::string result = kUnitSpace;
  std::string_view name = unit.name();
  auto take = [&](std::size_t length) {
    const std::string_view start = name.substr(0, length);
    name.remove_prefix(start.size());
    return std::string(start);
  };
  while (!name.empty()) {
    if (name[0] == ' ') {
      take(1);
      result += "<mspace width=\"0.2em\"/>";
    } else if (std::string_view("/()").find(name[0]) != std::string_view::npos) {
      result += fmt::format("<mo stretchy=\"false\" lspace=\"0\" rspace=\"0\">{}</mo>", take(1));
    } else {
      const std::string symbol = fmt::format("<mi mathvariant=\"normal\">{}</mi>",
                                             escaped(take(name.find_first_of(" /()^"))));
      if (!name.starts_with('^')) {
        result += symbol;
        continue;
      }
      take(1);
      const bool fraction = name.starts_with('(');
      const std::string power = take(fraction ? name.find(')') + 1 : name.find_first_of(" /()"));
      result += fmt::format("<msup>{}<mn>{}</mn></msup>", symbol,
                            fraction ? power.substr(1, power.size() - 2) : power);
    }
  }
  return result;
}

class MathWriter {
 public:
  explicit MathWriter(const DisplayOptions& options) : options_(options) {}

  // The value with those nested in it, if they fit the page.
  std::string markup(const Value& v) {
    std::size_t left = kReportLimit.most;
    shows_nested_ = options_.all || count(v, left, 0);
    return value(v, 0);
  }

 private:
  std::vector<int> rows(const aMatrix* m) const {
    return shown_indices(m->rows, options_.all ? m->rows : kMostRows);
  }
  std::vector<int> cols(const aMatrix* m) const {
    return shown_indices(m->cols, options_.all ? m->cols : kMostCols);
  }
  static std::ptrdiff_t place(const aMatrix* m, int i, int j) {
    return static_cast<std::ptrdiff_t>(j) * m->leading_dimension + i;
  }

  // Takes the elements that are shown from what is left; false when they are more.
  bool count(const Value& v, std::size_t& left, std::size_t depth) const {
    if (left == 0) return false;
    --left;
    if (!is_matrix(v) || is_too_deep(depth)) return true;
    const aMatrix* const m = matrix(v);
    for (const int i : rows(m))
      for (const int j : cols(m)) {
        const double re = i < 0 || j < 0 ? 0.0 : re_at(m, place(m, i, j));
        if (!count(efi::is_nested_element(re) ? nested(re) : number_value(re), left, depth + 1))
          return false;
      }
    return true;
  }

  std::string value(const Value& v, std::size_t depth) const {
    if (is_number(v)) return number(v);
    if (is_text(v))
      return fmt::format("<mtext>\u201C{}\u201D</mtext>",
                         escaped(depth == 0 || options_.all ? text(v) : cell_text(text(v))));
    if (is_matrix(v))
      return row(matrix_markup(matrix(v), depth) +
                 (v.unit == nullptr ? "" : kUnitSpace + unit_markup(*v.unit)));
    if (has_kind(v, kFunctionKind))
      return fmt::format("<mtext>{}</mtext>", escaped(signature_text(function_of(v))));
    return "<mtext>no value</mtext>";
  }

  std::string number(const Value& v) const {
    const std::string plain = number_markup(worksheet::number(v), options_.digits);
    if (v.unit == nullptr) return plain;
    const bool complex = v.re != 0.0 && v.im != 0.0;
    return row((complex ? "<mo stretchy=\"false\">(</mo>" + plain + "<mo stretchy=\"false\">)</mo>"
                        : plain) +
               unit_markup(*v.unit));
  }

  std::string cell(const aMatrix* m, int i, int j, std::size_t depth) const {
    if (i < 0 || j < 0)
      return i < 0 && j < 0 ? "<mo>\u22F1</mo>" : i < 0 ? "<mo>\u22EE</mo>" : "<mo>\u22EF</mo>";
    const std::ptrdiff_t k = place(m, i, j);
    const double re = re_at(m, k);
    if (!efi::is_nested_element(re)) return number_markup({re, im_at(m, k)}, options_.digits);
    const Value inner = nested(re);
    const bool named = !shows_nested_ || is_too_deep(depth + 1);
    if (!named || !is_matrix(inner)) return value(inner, depth + 1);
    return fmt::format("<mtext>[{} \u00D7 {}]</mtext>", matrix(inner)->rows, matrix(inner)->cols);
  }

  std::string matrix_markup(const aMatrix* m, std::size_t depth) const {
    std::string table = "<mo fence=\"true\">[</mo><mtable columnalign=\"right\">";
    const std::vector<int> shown = cols(m);
    for (const int i : rows(m)) {
      table += "<mtr>";
      for (const int j : shown) table += "<mtd>" + cell(m, i, j, depth) + "</mtd>";
      table += "</mtr>";
    }
    table += "</mtable><mo fence=\"true\">]</mo>";
    if (options_.all || (m->rows <= kMostRows && m->cols <= kMostCols)) return table;
    return fmt::format("<munder>{}<mtext>{} \u00D7 {}</mtext></munder>", row(table), m->rows,
                       m->cols);
  }

  const DisplayOptions& options_;
  bool shows_nested_ = true;
};

std::string formula(const std::string& name, const std::string& value, bool tall) {
  const std::string start = name.empty() ? "" : fmt::format("<mi>{}</mi><mo>=</mo>", escaped(name));
  return fmt::format("<math xmlns=\"http://www.w3.org/1998/Math/MathML\"{}>{}</math>\n",
                     tall ? " display=\"block\"" : "", row(start + value));
}

}  // namespace

std::string math_markup(const efi::Store& store, const std::string& name, const Value& value,
                        const DisplayOptions& options) {
  MathWriter writer(options);
  const auto parts = store.parts(value.object);
  if (parts.empty()) return formula(name, writer.markup(value), is_matrix(value));
  std::string result;
  for (std::size_t k = 0; k < parts.size(); ++k)
    result += formula(fmt::format("{}{}part {}", name, name.empty() ? "" : ", ", k + 1),
                      writer.markup(object_value(parts[k], value.unit)), true);
  return result;
}

}  // namespace worksheet
