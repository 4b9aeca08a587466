#include "host/worksheet/output/display.hpp"

#include <algorithm>
#include <functional>
#include <ostream>
#include <vector>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/units/unit.hpp"
#include "host/worksheet/output/help_text.hpp"
#include "host/worksheet/output/listing.hpp"
#include "host/worksheet/output/matrix_text.hpp"
#include "host/worksheet/output/number_text.hpp"
#include "host/worksheet/values/variable.hpp"

namespace worksheet {

namespace {

constexpr const char* kRed = "\033[31m";
constexpr const char* kPlain = "\033[0m";

constexpr int kLeastWidth = 40;  // Lines are not cut to less.

// Shows values as text, piece by piece.
class Printer {
 public:
  Printer(std::ostream& out, const Outcome& outcome, const DisplayOptions& options)
      : out_(out), outcome_(outcome), options_(options) {}

  // "name = value", the value on lines of its own if it is a matrix.
  void print(const std::string& name, const Value& value);
  void print_error();
  void print_trust(const Trust& trust);

 private:
  std::string inline_text(const Value& value) const;
  std::string pictures_text() const;
  void print_matrix(const std::string& start, const Value& value);
  void print_marked_line(const Source& source, Span span);
  std::string red(const std::string& text) const {
    return options_.colour ? kRed + text + kPlain : text;
  }

  std::ostream& out_;
  const Outcome& outcome_;
  DisplayOptions options_;
};

std::string Printer::inline_text(const Value& value) const {
  if (is_number(value)) {
    const std::string text = number_text(number(value), options_.format);
    if (value.unit == nullptr) return text;
    const bool complex = value.im != 0.0 && value.re != 0.0;
    return fmt::format("{}{}{} {}", complex ? "(" : "", text, complex ? ")" : "",
                       value.unit->name());
  }
  if (is_text(value)) return fmt::format("\"{}\"", text(value));
  if (is_matrix(value))
    return kind_words(value) + (value.unit == nullptr ? "" : " in " + value.unit->name());
  if (is_none(value) && !outcome_.pictures.empty()) return pictures_text();
  return kind_words(value);
}

std::string Printer::pictures_text() const {
  std::vector<std::string> texts;
  for (const Drawn& drawn : outcome_.pictures)
    texts.push_back(drawn.file.empty() ? fmt::format("picture ({})", drawn.description)
                                       : fmt::format("picture {}", drawn.file));
  return joined(texts, ", ");
}

void Printer::print_matrix(const std::string& start, const Value& value) {
  const aMatrix* const m = matrix(value);
  const std::function<std::string(double)> brief = [this](double element) {
    const Value inner = nested(element);
    if (is_text(inner) && !options_.all) return fmt::format("\"{}\"", cell_text(text(inner)));
    return is_matrix(inner) ? fmt::format("[{}]", inline_text(inner)) : inline_text(inner);
  };
  const MatrixText shown(m, options_, brief);
  std::vector<std::string> counts;
  if (shown.rows() < m->rows) counts.push_back(fmt::format("{} rows", shown.rows()));
  if (shown.cols() < m->cols) counts.push_back(fmt::format("{} columns", shown.cols()));
  out_ << start << inline_text(value);
  if (!counts.empty()) out_ << fmt::format(", {} shown", joined(counts, " and "));
  out_ << '\n';
  shown.write(out_);
}

void Printer::print(const std::string& name, const Value& value) {
  const std::string start = name.empty() ? "" : name + " = ";
  const auto parts = outcome_.store->parts(value.object);
  if (!parts.empty()) {
    out_ << fmt::format("{}{} parts\n", start, parts.size());
    for (std::size_t k = 0; k < parts.size(); ++k)
      print(fmt::format("part {}", k + 1), object_value(parts[k], value.unit));
    return;
  }
  const NumberFormat format = options_.format;
  const Value shown = with_chosen_prefix(value, &options_.format);
  if (is_matrix(shown))
    print_matrix(start, shown);
  else
    out_ << start << inline_text(shown) << '\n';
  options_.format = format;
}

// The line in which the span begins, and carets under the span; of a line that is too long, what
// surrounds the beginning of the span.
void Printer::print_marked_line(const Source& source, Span span) {
  const Source::Position begin = source.position(span.begin);
  const Source::Position end = source.position(span.end);
  std::vector<std::string> line =
      characters(source.lines()[static_cast<std::size_t>(begin.line - source.line)]);
  const std::string number = fmt::format("{:>5} | ", begin.line);
  const std::size_t width =
      static_cast<std::size_t>(std::max(options_.width, kLeastWidth)) - number.size();
  std::size_t at = begin.column - 1;
  std::size_t length = (end.line == begin.line ? end.column - 1 : line.size()) - at;
  if (line.size() > width) {
    const std::size_t first = std::min(at - std::min(at, width / 2), line.size() - width);
    const auto kept = line.begin() + static_cast<std::ptrdiff_t>(first);
    const std::string dot(1, '.');
    const bool cut_behind = first + width < line.size();
    line = {kept, kept + static_cast<std::ptrdiff_t>(width)};
    if (first > 0) std::fill_n(line.begin(), 3, dot);
    if (cut_behind) std::fill_n(line.end() - 3, 3, dot);
    at -= first;
    length = std::min(length, width - at);
  }
  if (!source.origin.empty()) out_ << source.origin << ":\n";
  out_ << fmt::format("{}{}\n{}{}\n", number, joined(line, ""),
                      std::string(number.size() + at, ' '),
                      red(std::string(std::max<std::size_t>(length, 1), '^')));
}

void Printer::print_error() {
  if (outcome_.is_syntax_error()) {
    out_ << fmt::format("{} line {}, column {}: {}\n", red("error:"), outcome_.line,
                        outcome_.column, outcome_.syntax_message);
    print_marked_line(*outcome_.source, {outcome_.offset, outcome_.offset});
    return;
  }
  const auto* const error = static_cast<const aError*>(outcome_.value.object);
  out_ << red("error:");
  // Short, so that the error that came first stays in sight.
  if (outcome_.failed_line() != 0) out_ << fmt::format(" line {}:", outcome_.line);
  out_ << fmt::format(" {}\n", error->message->text);
  if (outcome_.failed_line() != 0) return;
  const Place& place = outcome_.place;
  const bool known = outcome_.is_place_known();
  // An error inside a function: the statement that came there is shown, too.
  if (!known || place.source != outcome_.source) print_marked_line(*outcome_.source, {0, 0});
  if (known) print_marked_line(*place.source, place.span);
}

// A warning with its call; a note alone.
void Printer::print_trust(const Trust& trust) {
  const audit::Finding& finding = trust.finding;
  if (finding.level == audit::Level::ok) return;
  const bool warns = finding.level == audit::Level::warning;
  out_ << fmt::format("{} {}: {}\n", warns ? red("!") : "note:", finding.function, finding.text);
  if (warns && trust.source != nullptr) print_marked_line(*trust.source, trust.span);
}

}  // namespace

namespace {

void print_value(Printer& printer, const Outcome& outcome, const DisplayOptions& options) {
  if (outcome.failed()) {
    printer.print_error();
  } else if (outcome.is_quiet) {
    return;
  } else if (outcome.names.size() > 1) {
    const auto parts = outcome.store->parts(outcome.value.object);
    for (std::size_t k = 0; k < parts.size(); ++k)
      printer.print(outcome.names[k], object_value(parts[k], outcome.value.unit));
  } else if (!outcome.names.empty()) {
    printer.print(outcome.names[0], outcome.value);
  } else if (!is_none(outcome.value) || outcome.notes.empty()) {
    const std::string& source = outcome.source->text;
    const bool shown = options.show_source && source.find('\n') == std::string::npos;
    printer.print(shown ? source : "", outcome.value);
  }
}

}  // namespace

void show_outcome(std::ostream& out, const Outcome& outcome, const DisplayOptions& options) {
  if (outcome.is_definition && !outcome.failed()) return;
  if (outcome.help && !outcome.failed()) {
    out << help_text(*outcome.help, options.width);
    return;
  }
  if (outcome.variables) {
    if (outcome.is_quiet) return;
    out << variables_text(*outcome.variables);
    return;
  }
  if (outcome.is_silent()) return;
  DisplayOptions chosen = options;
  chosen.format = outcome.format.value_or(options.format);
  Printer printer(out, outcome, chosen);
  print_value(printer, outcome, chosen);
  for (const Trust& trust : outcome.trust) printer.print_trust(trust);
  for (const std::string& note : outcome.notes) out << fmt::format("note: {}\n", note);
}

}  // namespace worksheet
