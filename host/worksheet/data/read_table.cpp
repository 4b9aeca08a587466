#include "host/worksheet/data/read_table.hpp"

#include <algorithm>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/units/unit.hpp"
#include "host/worksheet/data/headings.hpp"
#include "host/worksheet/data/table_numbers.hpp"

namespace worksheet {

namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

// A column while it is read.
struct Column {
  Heading heading;
  bool wanted = true;
  std::vector<double> re, im;  // `im` from the first complex number on.
  std::size_t numbers = 0, texts = 0;
  bool blank = true;  // So far.
  // The first cell that is neither a number nor missing.
  std::string text;
  int text_line = 0;
  bool other_decimal = false;  // It would be a number with the other decimal sign.

  bool is_text() const { return texts > numbers; }
  void add(const Number& z);
};

void Column::add(const Number& z) {
  if (im.empty() && (z.imag() != 0.0 || std::signbit(z.imag()))) im.resize(re.size(), 0.0);
  re.push_back(z.real());
  if (!im.empty() || z.imag() != 0.0 || std::signbit(z.imag())) im.push_back(z.imag());
}

using Names = std::vector<std::string>;

// A few of the names.
std::string listing(const Names& names) {
  constexpr std::size_t kMostListed = 8;
  Names some(names.begin(),
             names.begin() + static_cast<std::ptrdiff_t>(std::min(names.size(), kMostListed)));
  if (some.size() < names.size())
    some.push_back(fmt::format("and {} more", names.size() - some.size()));
  return joined(some, ", ");
}

class Table {
 public:
  Table(const DataFile& file, const TableOptions& options)
      : file_(file), options_(options), style_(style_of(file, options)), columns_(style_.cells) {
    if (!style_.headings) return;
    CellReader reader(file_, style_.separator);
    reader.next();
    const std::size_t lacking = style_.cells - std::min(reader.cells().size(), style_.cells);
    for (std::size_t k = 0; k + lacking < columns_.size(); ++k)
      columns_[k + lacking].heading = heading_of(cell_text(reader.cells()[k].text));
  }

  bool has_headings() const { return style_.headings; }
  Names headings() const;
  void want_only(const std::string& name);
  void read();
  DataMatrix matrix(bool all);

 private:
  std::string label(const Column& column) const;
  bool is_row_names(const Column& column) const {
    return style_.row_names && &column == &columns_[0];
  }
  void add_cell(Column& column, const Cell& cell, int line);
  void add_text(Column& column, const Cell& cell, int line);
  void trim_blank_edges();
  [[noreturn]] void fail_at_text(const Column& column) const;
  std::vector<const Column*> chosen_columns(bool all);
  const Unit* common_unit(const std::vector<const Column*>& columns);
  void note(const std::string& text) { notes_.push_back(file_.path() + ": " + text); }

  const DataFile& file_;
  const TableOptions& options_;
  TableStyle style_;
  std::vector<Column> columns_;
  char decimal_ = '.';
  std::size_t rows_ = 0, filled_rows_ = 0;
  Names notes_;
};

// "column 2", or "column "F (kN)"".
std::string Table::label(const Column& column) const {
  if (!column.heading.whole.empty()) return fmt::format("\"{}\"", excerpt(column.heading.whole));
  return fmt::format("column {}", &column - columns_.data() + 1);
}

Names Table::headings() const {
  Names names;
  for (const Column& column : columns_) names.push_back(column.heading.whole);
  return names;
}

void Table::want_only(const std::string& name) {
  Column* found = nullptr;
  for (const bool whole : {true, false}) {
    for (Column& column : columns_) {
      column.wanted = false;
      if ((whole ? column.heading.whole : column.heading.name) != name) continue;
      if (found != nullptr)
        file_.fail_whole(fmt::format("{} and {} are both called \"{}\"{}", label(*found),
                                     label(column), excerpt(name),
                                     whole ? "" : ": give the whole heading"));
      found = &column;
    }
    if (found != nullptr) break;
  }
  Names labels;
  for (const Column& column : columns_) labels.push_back(label(column));
  if (found == nullptr)
    file_.fail_whole(style_.headings ? fmt::format("no column is called \"{}\"; there are {}",
                                                   excerpt(name), listing(labels))
                                     : "its columns have no headings; read it as a whole");
  found->wanted = true;
}

void Table::read() {
  decimal_ = decimal_of(file_, style_, options_);
  CellReader reader(file_, style_.separator);
  if (style_.headings) reader.next();
  while (reader.next()) {
    const std::vector<Cell>& cells = reader.cells();
    if (cells.size() != columns_.size())
      file_.fail_at(reader.line(), fmt::format("{} where {} are due; one that holds a separator "
                                               "stands in quotation marks",
                                               counted(cells.size(), "cell"), columns_.size()));
    ++rows_;
    for (std::size_t k = 0; k < cells.size(); ++k) {
      if (!cells[k].text.empty()) filled_rows_ = rows_;
      if (columns_[k].wanted) add_cell(columns_[k], cells[k], reader.line());
    }
  }
  trim_blank_edges();
}

void Table::add_cell(Column& column, const Cell& cell, int line) {
  column.blank = column.blank && cell.text.empty();
  if (is_missing(cell.text)) return column.add(kMissing);
  if (const auto z = number_in(cell.text, decimal_)) {
    ++column.numbers;
    return column.add(*z);
  }
  add_text(column, cell, line);
  column.add(kMissing);
}

void Table::add_text(Column& column, const Cell& cell, int line) {
  ++column.texts;
  const bool other =
      !options_.decimal && number_in(cell.text, decimal_ == '.' ? ',' : '.').has_value();
  if (column.texts > 1 && (!other || column.other_decimal)) return;
  column.text = excerpt(cell_text(cell.text));
  column.text_line = line;
  column.other_decimal = other;
}

// Spreadsheets write empty lines and columns beyond the data.
void Table::trim_blank_edges() {
  if (filled_rows_ == 0) file_.fail_whole("the file ends without a row of numbers");
  if (filled_rows_ < rows_)
    note(fmt::format("left out {} at the end",
                     counted(static_cast<std::int64_t>(rows_ - filled_rows_), "blank row")));
  rows_ = filled_rows_;
  std::size_t left_out = 0;
  for (; columns_.size() > 1; columns_.pop_back(), ++left_out) {
    const Column& last = columns_.back();
    if (!last.wanted || !last.blank || !last.heading.whole.empty()) break;
  }
  if (left_out > 0)
    note(fmt::format("left out {} at the right",
                     counted(static_cast<std::int64_t>(left_out), "blank column")));
}

void Table::fail_at_text(const Column& column) const {
  const std::string place =
      fmt::format("{}{}", column.heading.whole.empty() ? "" : "column ", label(column));
  if (column.other_decimal)
    file_.fail_at(column.text_line,
                  fmt::format("{}: \"{}\" has a decimal {}, other numbers have a {}: say "
                              "\"decimal: comma\" or \"decimal: point\"",
                              place, column.text, decimal_ == '.' ? "comma" : "point",
                              decimal_ == '.' ? "point" : "comma"));
  if (column.is_text())
    file_.fail_at(column.text_line, fmt::format("{}: it holds text: \"{}\"", place, column.text));
  file_.fail_at(column.text_line,
                fmt::format("{}: \"{}\" is not a number; leave the cell blank where a value is "
                            "missing{}",
                            place, column.text,
                            style_.headings || options_.headings
                                ? ""
                                : ", and say \"headings: first line\" if the first line "
                                  "names the columns"));
}

// The columns that make the matrix; a column of numbers with text in it is an error.
std::vector<const Column*> Table::chosen_columns(bool all) {
  std::vector<const Column*> chosen;
  Names texts;
  for (const Column& column : columns_) {
    if (!column.wanted || (all && is_row_names(column))) continue;
    if (column.texts > 0 && (!all || !column.is_text() || column.other_decimal))
      fail_at_text(column);
    if (column.is_text())
      texts.push_back(label(column));
    else
      chosen.push_back(&column);
  }
  if (chosen.empty())
    file_.fail_whole(fmt::format("it has no column of numbers; {} hold text", listing(texts)));
  if (!texts.empty()) note(fmt::format("left out {}: text", listing(texts)));
  if (all && style_.row_names) note("left out the names of the rows, a column without a heading");
  return chosen;
}

// The unit of all columns; none, with a note, where they differ.
const Unit* Table::common_unit(const std::vector<const Column*>& columns) {
  const Unit* const unit = columns[0]->heading.unit;
  for (const Column* column : columns)
    if (!column->heading.doubt.empty()) {
      note(column->heading.doubt);
      break;
    }
  const bool same = std::all_of(columns.begin(), columns.end(),
                                [&](const Column* c) { return c->heading.unit == unit; });
  if (same) return unit;
  note(
      "plain numbers, since the columns have different units; read a column by its heading to have "
      "its unit");
  return nullptr;
}

DataMatrix Table::matrix(bool all) {
  const std::vector<const Column*> chosen = chosen_columns(all);
  MatrixBuilder matrix(static_cast<std::ptrdiff_t>(rows_),
                       static_cast<std::ptrdiff_t>(chosen.size()));
  for (std::size_t j = 0; j < chosen.size(); ++j) {
    const Column& column = *chosen[j];
    const auto count = static_cast<std::ptrdiff_t>(rows_);
    std::copy_n(column.re.begin(), count, matrix.re() + j * rows_);
    if (!column.im.empty()) std::copy_n(column.im.begin(), count, matrix.need_im() + j * rows_);
  }
  const Unit* const unit = common_unit(chosen);
  return {std::move(matrix), unit, std::move(notes_)};
}

}  // namespace

std::vector<std::string> table_headings(const DataFile& file, const TableOptions& options) {
  const Table table(file, options);
  if (!table.has_headings()) file.fail_whole("its columns have no headings");
  return table.headings();
}

DataMatrix read_table(const DataFile& file, const TableOptions& options,
                      const std::optional<std::string>& column) {
  Table table(file, options);
  if (column) table.want_only(*column);
  table.read();
  return table.matrix(!column);
}

}  // namespace worksheet
