#include "host/worksheet/display.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "fmt/format.h"
#include "host/worksheet/unit.hpp"

namespace worksheet {

namespace {

constexpr const char* kRed = "\033[31m";
constexpr const char* kPlain = "\033[0m";

std::string real_text(double x, int digits) {
  if (std::isnan(x)) return "nan";
  if (std::isinf(x)) return x > 0.0 ? "inf" : "-inf";
  return fmt::format("{:.{}g}", x == 0.0 ? 0.0 : x, digits);
}

// Shows values as text, piece by piece.
class Printer {
 public:
  Printer(const Machine& machine, const DisplayOptions& options)
      : machine_(machine), options_(options) {}

  // "name = value", the value on lines of its own if it is a matrix.
  void print(const std::string& name, const Value& value);
  void print_error(const Outcome& outcome);
  std::string take() { return std::move(text_); }

 private:
  std::string inline_text(const Value& value) const;
  std::string pictures_text() const;
  std::string cell_text(const aMatrix* m, int i, int j) const;
  void print_matrix(const aMatrix* m);
  void print_marked_line(const Source& source, Span span);

  const Machine& machine_;
  const DisplayOptions& options_;
  std::string text_;
};

std::string padded(const std::string& cell, std::size_t width) {
  const std::size_t length = character_count(cell);
  return std::string(width > length ? width - length : 0, ' ') + cell;
}

std::string Printer::inline_text(const Value& value) const {
  if (is_number(value)) {
    const std::string text = number_text(number(value), options_.digits);
    if (value.unit == nullptr) return text;
    const bool complex = value.im != 0.0 && value.re != 0.0;
    return fmt::format("{}{}{} {}", complex ? "(" : "", text, complex ? ")" : "",
                       value.unit->name());
  }
  if (is_text(value)) return fmt::format("\"{}\"", text(value));
  if (is_matrix(value))
    return fmt::format("{} x {} {}{}", matrix(value)->rows, matrix(value)->cols,
                       contains_ptrs(matrix(value)) ? "nested array" : "matrix",
                       value.unit == nullptr ? "" : " in " + value.unit->name());
  if (is_none(value) && !machine_.pictures.empty()) return pictures_text();
  if (!has_kind(value, kFunctionKind)) return "no value";
  const Function& function = function_of(value);
  return fmt::format("{}({})", function.name, fmt::join(function.parameters, ", "));
}

std::string Printer::pictures_text() const {
  std::vector<std::string> texts;
  for (const Drawn& drawn : machine_.pictures)
    texts.push_back(drawn.file.empty() ? fmt::format("picture ({})", drawn.description)
                                       : fmt::format("picture {}", drawn.file));
  return fmt::format("{}", fmt::join(texts, ", "));
}

std::string Printer::cell_text(const aMatrix* m, int i, int j) const {
  if (i < 0 || j < 0) return i < 0 && j < 0 ? "" : "...";
  const std::ptrdiff_t k = static_cast<std::ptrdiff_t>(j) * m->leading_dimension + i;
  const double re = re_at(m, k);
  if (!efi::is_nested_element(re)) return number_text({re, im_at(m, k)}, options_.digits);
  const Value inner = machine_.nested(re);
  return is_matrix(inner) ? fmt::format("[{}]", inline_text(inner)) : inline_text(inner);
}

void Printer::print_matrix(const aMatrix* m) {
  const std::vector<int> rows = shown_indices(m->rows, options_.most_rows);
  // The columns that fit: as many as the widest cell of the first ones allows.
  std::vector<int> cols = shown_indices(m->cols, options_.width / 3);
  std::vector<std::vector<std::string>> cells;
  std::vector<std::size_t> widths;
  for (bool fits = false; !fits;) {
    cells.assign(rows.size(), {});
    widths.assign(cols.size(), 0);
    for (std::size_t i = 0; i < rows.size(); ++i)
      for (std::size_t j = 0; j < cols.size(); ++j) {
        cells[i].push_back(cell_text(m, rows[i], cols[j]));
        widths[j] = std::max(widths[j], character_count(cells[i][j]));
      }
    std::size_t width = 0;
    for (const std::size_t w : widths) width += w + 2;
    fits = width <= static_cast<std::size_t>(options_.width) || cols.size() <= 3;
    if (!fits) cols = shown_indices(m->cols, static_cast<int>(cols.size()) - 2);
  }
  for (const auto& row : cells) {
    for (std::size_t j = 0; j < row.size(); ++j)
      text_.append(2, ' ').append(padded(row[j], widths[j]));
    text_ += '\n';
  }
}

void Printer::print(const std::string& name, const Value& value) {
  const std::string start = name.empty() ? "" : name + " = ";
  const auto parts = machine_.store.parts(value.object);
  if (!parts.empty()) {
    text_ += fmt::format("{}{} parts\n", start, parts.size());
    for (std::size_t k = 0; k < parts.size(); ++k)
      print(fmt::format("part {}", k + 1), object_value(parts[k], value.unit));
    return;
  }
  text_ += start + inline_text(value) + '\n';
  if (is_matrix(value)) print_matrix(matrix(value));
}

// The line in which the span begins, and carets under the span.
void Printer::print_marked_line(const Source& source, Span span) {
  const Source::Position begin = source.position(span.begin);
  const Source::Position end = source.position(span.end);
  const std::string line = source.lines()[static_cast<std::size_t>(begin.line - source.line)];
  const std::size_t length =
      end.line == begin.line ? end.column - begin.column : character_count(line) + 1 - begin.column;
  const std::string number = fmt::format("{:>5} | ", begin.line);
  text_ +=
      fmt::format("{}{}\n{}{}\n", number, line, std::string(number.size() + begin.column - 1, ' '),
                  std::string(std::max<std::size_t>(length, 1), '^'));
}

void Printer::print_error(const Outcome& outcome) {
  const char* const on = options_.colour ? kRed : "";
  const char* const off = options_.colour ? kPlain : "";
  if (outcome.is_syntax_error()) {
    text_ += fmt::format("{}error:{} line {}, column {}: {}\n", on, off, outcome.line,
                         outcome.column, outcome.syntax_message);
    print_marked_line(*outcome.source, {outcome.offset, outcome.offset});
    return;
  }
  const auto* const error = static_cast<const aError*>(outcome.value.object);
  text_ += fmt::format("{}error:{} {}\n", on, off, error->message->text);
  const Place& place = machine_.place();
  if (place.error != error || place.source == nullptr) return;
  if (place.source != outcome.source) print_marked_line(*outcome.source, {0, 0});
  print_marked_line(*place.source, place.span);
}

}  // namespace

std::vector<int> shown_indices(int count, int most) {
  std::vector<int> shown;
  for (int k = 0; k < count; ++k) {
    if (count > most && k == most / 2) {
      shown.push_back(-1);
      k = count - (most - most / 2 - 1);
    }
    shown.push_back(k);
  }
  return shown;
}

std::string number_text(const Number& z, int digits) {
  const std::string re = real_text(z.real(), digits);
  if (z.imag() == 0.0) return re;
  const std::string im = real_text(std::fabs(z.imag()), digits) + "i";
  const bool minus = std::signbit(z.imag());
  if (z.real() == 0.0) return minus ? fmt::format("-{}", im) : im;
  return re + (minus ? " - " : " + ") + im;
}

std::string outcome_text(const Machine& machine, const Outcome& outcome,
                         const DisplayOptions& options) {
  if (outcome.is_definition && !outcome.failed()) return "";
  Printer printer(machine, options);
  if (outcome.failed()) {
    printer.print_error(outcome);
  } else if (outcome.names.size() > 1) {
    const auto parts = machine.store.parts(outcome.value.object);
    for (std::size_t k = 0; k < parts.size(); ++k)
      printer.print(outcome.names[k], object_value(parts[k], outcome.value.unit));
  } else if (!outcome.names.empty()) {
    printer.print(outcome.names[0], outcome.value);
  } else {
    const std::string& source = outcome.source->text;
    const bool shown = options.show_source && source.find('\n') == std::string::npos;
    printer.print(shown ? source : "", outcome.value);
  }
  return printer.take();
}

}  // namespace worksheet
