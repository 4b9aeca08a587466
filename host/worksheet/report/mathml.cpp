#include "host/worksheet/report/mathml.hpp"

#include <cmath>
#include <string_view>

#include "fmt/format.h"
#include "host/units/unit.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/output/matrix_text.hpp"
#include "host/worksheet/output/number_text.hpp"
#include "host/worksheet/output/printed_size.hpp"
#include "host/worksheet/report/markup.hpp"
#include "host/worksheet/report/number_markup.hpp"
#include "host/worksheet/values/variable.hpp"

namespace worksheet {

namespace {

// Longer and wider matrices are elided; with all their elements, longer ones become tables, which
// break between the pages of a print.
constexpr int kMostRows = 16;
constexpr int kMostCols = 8;
// What of a matrix stands beside its name and its unit, in em.
constexpr double kMostWidth = 40.0;
constexpr double kOtherCellWidth = 4.0;  // Of what is no number, more or less.

// Before a unit; twice behind a bracket.
constexpr const char* kUnitSpace = "<mspace width=\"0.25em\"/>";

std::string math(const std::string& content, bool block = false) {
  return fmt::format("<math xmlns=\"http://www.w3.org/1998/Math/MathML\"{}>{}</math>",
                     block ? " display=\"block\"" : "", row_markup(content));
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

std::ptrdiff_t place(const aMatrix* m, int i, int j) {
  return static_cast<std::ptrdiff_t>(j) * m->leading_dimension + i;
}

class MathWriter {
 public:
  explicit MathWriter(const DisplayOptions& options) : options_(options) {}

  // "start value" as a line of the page: the value with those nested in it, if they fit.
  std::string line(const std::string& start, const Value& v) {
    std::size_t left = kReportLimit.most;
    shows_nested_ = options_.all || count(v, left, 0);
    if (!is_matrix(v)) return math(start + value(v, 0)) + '\n';
    const std::string unit = v.unit == nullptr ? "" : unit_markup(*v.unit);
    const aMatrix* const m = matrix(v);
    if (rows(m).size() > kMostRows) return table(start, m, unit);
    const std::string formula = math(start + matrix_markup(m, 0), true);
    if (unit.empty()) return formula + '\n';
    // However far the matrix is scrolled, its unit is seen.
    return fmt::format("<div class=\"formula\"><div class=\"scroll\">{}</div>{}</div>\n", formula,
                       math(kUnitSpace + unit));
  }

 private:
  std::vector<int> rows(const aMatrix* m) const {
    return shown_indices(m->rows, options_.all ? m->rows : kMostRows);
  }
  // As many columns as a page has room for.
  std::vector<int> cols(const aMatrix* m) const {
    if (options_.all) return shown_indices(m->cols, m->cols);
    for (int most = std::min(m->cols, kMostCols);; --most) {
      std::vector<int> shown = shown_indices(m->cols, most);
      double width = 0.0;
      for (const int j : shown) width += column(m, j).width();
      if (width <= kMostWidth || most <= 3) return shown;
    }
  }
  NumberColumn column(const aMatrix* m, int j) const {
    NumberColumn column(options_.format);
    if (j < 0) return column;
    for (const int i : rows(m)) {
      if (i < 0) continue;
      const double re = re_at(m, place(m, i, j));
      if (efi::is_nested_element(re))
        column.reserve(kOtherCellWidth);
      else
        column.take({re, im_at(m, place(m, i, j))});
    }
    return column;
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
      return row_markup(matrix_markup(matrix(v), depth) +
                        (v.unit == nullptr ? "" : kUnitSpace + unit_markup(*v.unit)));
    if (has_kind(v, kFunctionKind))
      return fmt::format("<mtext>{}</mtext>", escaped(signature_text(function_of(v))));
    return "<mtext>no value</mtext>";
  }

  std::string number(const Value& v) const {
    const std::string plain = NumberColumn(options_.format).markup(worksheet::number(v));
    if (v.unit == nullptr) return plain;
    const bool complex = v.re != 0.0 && v.im != 0.0;
    return row_markup(
        (complex ? "<mo stretchy=\"false\">(</mo>" + plain + "<mo stretchy=\"false\">)</mo>"
                 : plain) +
        unit_markup(*v.unit));
  }

  std::string cell(const aMatrix* m, int i, int j, const NumberColumn& column,
                   std::size_t depth) const {
    if (i < 0 || j < 0)
      return i < 0 && j < 0 ? "<mo>\u22F1</mo>" : i < 0 ? "<mo>\u22EE</mo>" : "<mo>\u22EF</mo>";
    const std::ptrdiff_t k = place(m, i, j);
    const double re = re_at(m, k);
    if (!efi::is_nested_element(re)) return column.markup({re, im_at(m, k)});
    const Value inner = nested(re);
    const bool named = !shows_nested_ || is_too_deep(depth + 1);
    if (!named || !is_matrix(inner)) return value(inner, depth + 1);
    return fmt::format("<mtext>[{} \u00D7 {}]</mtext>", matrix(inner)->rows, matrix(inner)->cols);
  }

  // The rows of a matrix, each cell and each row between the marks of its kind.
  std::string cells(const aMatrix* m, std::size_t depth, const char* row_name,
                    const char* cell_name, bool is_html) const {
    const std::vector<int> shown = cols(m);
    std::vector<NumberColumn> columns;
    for (const int j : shown) columns.push_back(column(m, j));
    std::string result;
    for (const int i : rows(m)) {
      result += fmt::format("<{}>", row_name);
      for (std::size_t k = 0; k < shown.size(); ++k) {
        const std::string content = cell(m, i, shown[k], columns[k], depth);
        result += fmt::format("<{0}>{1}</{0}>", cell_name, is_html ? math(content) : content);
      }
      result += fmt::format("</{}>", row_name);
    }
    return result;
  }

  std::string matrix_markup(const aMatrix* m, std::size_t depth) const {
    const std::string table = "<mo fence=\"true\">[</mo><mtable columnalign=\"right\">" +
                              cells(m, depth, "mtr", "mtd", false) +
                              "</mtable><mo fence=\"true\">]</mo>";
    const bool whole = options_.all || (m->rows <= kMostRows &&
                                        cols(m).size() == static_cast<std::size_t>(m->cols));
    if (whole) return table;
    return fmt::format("<munder>{}<mtext>{} \u00D7 {}</mtext></munder>", row_markup(table), m->rows,
                       m->cols);
  }

  std::string table(const std::string& start, const aMatrix* m, const std::string& unit) const {
    const std::string extents = fmt::format("<mtext>{} \u00D7 {}</mtext>{}", m->rows, m->cols,
                                            unit.empty() ? "" : "<mtext>\u00A0in</mtext>" + unit);
    return fmt::format("<table class=\"matrix\"><caption>{}</caption>{}</table>\n",
                       math(start + extents), cells(m, 0, "tr", "td", true));
  }

  const DisplayOptions& options_;
  bool shows_nested_ = true;
};

std::string line_of(const std::string& start, const Value& value, const DisplayOptions& options) {
  DisplayOptions chosen = options;
  const Value shown = with_chosen_prefix(value, &chosen.format);
  return MathWriter(chosen).line(start, shown);
}

std::string start_of(const std::string& name) {
  return name.empty() ? "" : fmt::format("<mi>{}</mi><mo>=</mo>", escaped(name));
}

}  // namespace

std::string math_markup(const efi::Store& store, const std::string& name, const Value& value,
                        const DisplayOptions& options) {
  const auto parts = store.parts(value.object);
  if (parts.empty()) return line_of(start_of(name), value, options);
  std::string result;
  for (std::size_t k = 0; k < parts.size(); ++k)
    result += line_of(start_of(fmt::format("{}{}part {}", name, name.empty() ? "" : ", ", k + 1)),
                      object_value(parts[k], value.unit), options);
  return result;
}

}  // namespace worksheet
