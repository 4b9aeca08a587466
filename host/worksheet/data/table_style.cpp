#include "host/worksheet/data/table_style.hpp"

#include <algorithm>
#include <stdexcept>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/worksheet/data/table_numbers.hpp"

namespace worksheet {

namespace {

// So many lines tell the separator.
constexpr std::size_t kSample = 20;

struct Word {
  const char* word;
  char meaning;
};
constexpr Word kSeparators[] = {
    {"comma", ','}, {",", ','},         {"semicolon", ';'},    {";", ';'},
    {"tab", '\t'},  {"blank", kBlanks}, {"none", kNoSeparator}};
constexpr Word kDecimals[] = {{"comma", ','}, {",", ','}, {"point", '.'}, {".", '.'}};
constexpr Word kHeadings[] = {{"none", 0}, {"first line", 1}};

template <std::size_t n>
char meaning_of(std::string_view word, const Word (&words)[n]) {
  for (const Word& known : words)
    if (word == known.word) return known.meaning;
  std::vector<std::string> choices;
  for (const Word& known : words)
    if (known.word[1] != '\0') choices.emplace_back(known.word);
  throw std::invalid_argument(
      fmt::format("\"{}\" is not known here; there are {}", excerpt(word), joined(choices, ", ")));
}

bool is_number(const Cell& cell) {
  return !is_missing(cell.text) &&
         (number_in(cell.text, '.').has_value() || number_in(cell.text, ',').has_value());
}

// What the first lines look like with a separator.
struct Sample {
  std::vector<std::size_t> counts;  // Of the cells in each line.
  bool numbers = true;              // Whether they hold nothing else; a first one of several may.
  bool quoted = false;              // Whether a cell stands in quotation marks.
  bool broken = false;              // Whether the lines cannot all be read.
};

Sample sample_with(const DataFile& file, char separator) {
  Sample sample;
  CellReader reader(file, separator);
  try {
    while (sample.counts.size() < kSample && reader.next()) {
      // The first line does not count once there is a second one.
      if (sample.counts.size() == 1) sample.numbers = true;
      for (const Cell& cell : reader.cells()) {
        sample.quoted = sample.quoted || cell.quoted;
        sample.numbers = sample.numbers && (is_missing(cell.text) || is_number(cell));
      }
      sample.counts.push_back(reader.cells().size());
    }
  } catch (const DataError&) {
    sample.broken = true;
    sample.counts.push_back(reader.cells().size());
  }
  return sample;
}

// Whether all lines have as many cells, two at least; the first one may lack a heading for the
// names of the rows.
bool is_table(const Sample& sample) {
  if (sample.broken || sample.counts.empty() || sample.counts.back() < 2) return false;
  const std::size_t cells = sample.counts.back(), first = sample.counts.front();
  return std::all_of(sample.counts.begin() + 1, sample.counts.end(),
                     [&](std::size_t count) { return count == cells; }) &&
         (first == cells || first + 1 == cells);
}

char separator_of(const DataFile& file, const TableOptions& options) {
  if (options.separator) return *options.separator;
  const std::string_view content = file.content();
  const std::string_view named = separator_named_in(content.substr(0, content.find('\n')));
  if (!named.empty()) return named[0];
  for (const char separator : {'\t', ';'})
    if (is_table(sample_with(file, separator))) return separator;
  // Blanks before commas, which may be decimal; but words stand apart by blanks, too.
  const Sample blanks = sample_with(file, kBlanks);
  if (is_table(blanks) && blanks.numbers) return kBlanks;
  const Sample commas = sample_with(file, ',');
  const bool decimal = options.decimal == ',' && !commas.quoted;
  if (is_table(commas) && !decimal) return ',';
  if (is_table(blanks)) return kBlanks;
  for (const char separator : {'\t', ';', ','}) {
    const Sample sample = sample_with(file, separator);
    if (!sample.counts.empty() && sample.counts[0] > 1 && !(separator == ',' && decimal))
      return separator;
  }
  return kNoSeparator;
}

// What the cells of a line are.
struct Line {
  std::size_t cells = 0, texts = 0, numbers = 0, quoted_numbers = 0;
  bool begins_blank = false, begins_with_name = false;
  bool counts_up = true;  // The cells behind the first one are 0, 1, 2...
};

Line line_of(const std::vector<Cell>& cells) {
  Line line;
  line.cells = cells.size();
  line.begins_blank = cells[0].text.empty();
  line.begins_with_name = cells[0].quoted || !is_number(cells[0]);
  for (const Cell& cell : cells) {
    const bool number = is_number(cell);
    line.numbers += number;
    line.quoted_numbers += number && cell.quoted;
    line.texts += !number && (!is_missing(cell.text) || (cell.quoted && !cell.text.empty()));
    if (&cell != &cells[0] && cell.text != fmt::format("{}", &cell - &cells[1]))
      line.counts_up = false;
  }
  return line;
}

// Whether the first line names the columns: it holds no number, or numbers that name columns
// without doubt.
bool names_columns(const Line& first, const Line& second) {
  if (first.texts > 0) return first.numbers == first.quoted_numbers;
  if (first.numbers == 0 || second.cells == 0) return false;
  const bool only_quoted =
      first.quoted_numbers == first.numbers && second.quoted_numbers < second.numbers;
  return only_quoted || (first.begins_blank && first.counts_up && second.numbers > 0);
}

}  // namespace

bool read_table_option(std::string_view text, TableOptions& options) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return false;
  const std::string_view key = text.substr(0, colon);
  // A tab may stand for itself.
  const std::string_view word = trimmed(text.substr(colon + 1));
  if (key == "separator")
    options.separator = text.ends_with('\t') ? '\t' : meaning_of(word, kSeparators);
  else if (key == "decimal")
    options.decimal = meaning_of(word, kDecimals);
  else if (key == "headings")
    options.headings = meaning_of(word, kHeadings) != 0;
  else
    return false;
  return true;
}

TableStyle style_of(const DataFile& file, const TableOptions& options) {
  TableStyle style = {separator_of(file, options), false, false, 0};
  CellReader reader(file, style.separator);
  if (!reader.next()) file.fail_whole("the file has no line of data");
  const int line = reader.line();
  const Line first = line_of(reader.cells());
  const Line second = reader.next() ? line_of(reader.cells()) : Line();
  style.cells = second.cells > 0 ? second.cells : first.cells;
  const bool lacks_heading = first.cells + 1 == second.cells && first.numbers == 0;
  style.headings = options.headings.value_or(lacks_heading || names_columns(first, second));
  if (style.headings && lacks_heading && !second.begins_with_name)
    file.fail_at(line, fmt::format("{}, and {} in the next line: name every column{}",
                                   counted(first.cells, "heading"), counted(second.cells, "cell"),
                                   style.separator != ','
                                       ? ""
                                       : "; if its commas are decimal, say \"decimal: comma\""));
  style.row_names = style.headings && (lacks_heading || (first.begins_blank && first.cells > 1));
  if (!lacks_heading) style.cells = first.cells;
  return style;
}

namespace {

[[noreturn]] void fail_ambiguous(const DataFile& file, int line, std::string_view cell) {
  file.fail_at(line,
               fmt::format("\"{}\" has a decimal comma or groups of digits, and nothing tells "
                           "which: say \"decimal: comma\" or \"decimal: point\"",
                           excerpt(cell)));
}

}  // namespace

char decimal_of(const DataFile& file, const TableStyle& style, const TableOptions& options) {
  if (options.decimal) return *options.decimal;
  CellReader reader(file, style.separator);
  if (style.headings) reader.next();
  int comma_line = 0;
  std::string comma;    // The first cell whose comma may be either,
  bool points = false;  // and whether there is one with a point.
  while (reader.next())
    for (const Cell& cell : reader.cells()) {
      const bool has_comma = cell.text.find(',') != std::string_view::npos;
      const bool has_point = cell.text.find('.') != std::string_view::npos;
      if (!has_comma && !has_point) continue;
      const auto with_point = number_in(cell.text, '.'), with_comma = number_in(cell.text, ',');
      if (with_point && !with_comma && has_point) return '.';
      if (with_comma && !with_point && has_comma) return ',';
      if (!with_point && !with_comma) continue;
      points = points || has_point;
      if (has_comma && comma.empty()) comma = cell.text, comma_line = reader.line();
    }
  if (comma.empty()) return '.';
  if (points || style.separator != ';') fail_ambiguous(file, comma_line, comma);
  return ',';
}

}  // namespace worksheet
