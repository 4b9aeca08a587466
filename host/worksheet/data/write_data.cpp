#include "host/worksheet/data/write_data.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <ostream>

#include "fmt/format.h"
#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/streams.hpp"
#include "host/text/numbers.hpp"
#include "host/text/text.hpp"
#include "host/units/unit.hpp"
#include "host/worksheet/data/data_file.hpp"
#include "host/worksheet/data/headings.hpp"
#include "host/worksheet/data/table_numbers.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

namespace {

// What is written, and the headings for its columns.
struct WriteRequest {
  std::string file;
  std::vector<Value> values;
  std::vector<Span> places;
  std::vector<std::string> names;  // As many as the call has.
};

std::ptrdiff_t rows_of(const Value& v) {
  return is_number(v) ? 1 : matrix(v)->rows;
}
std::ptrdiff_t cols_of(const Value& v) {
  return is_number(v) ? 1 : matrix(v)->cols;
}

void check_value(const WriteRequest& request, const Value& value, Span place) {
  if (!is_number(value) && !is_matrix(value))
    throw WrongArgument(place, "must be a number, a matrix or text");
  if (is_matrix(value) && contains_ptrs(matrix(value)))
    throw WrongArgument(place, "may not be nested");
  if (rows_of(value) < 1 || cols_of(value) < 1) throw WrongArgument(place, "has no elements");
  if (!request.values.empty() && rows_of(value) != rows_of(request.values[0]))
    throw WrongArgument(place,
                        fmt::format("has {}, the first one {}", counted(rows_of(value), "row"),
                                    rows_of(request.values[0])));
}

WriteRequest request_of(const Call& call) {
  constexpr std::string_view kKey = "heading:";
  WriteRequest request;
  if (call.arguments.empty() || !is_text(call.arguments[0]))
    throw WrongArgument(call.arguments.empty() ? call.span : call.places[0],
                        "the name of a file comes first");
  request.file = text(call.arguments[0]);
  for (std::size_t k = 1; k < call.arguments.size(); ++k) {
    const Value& value = call.arguments[k];
    const std::string_view words = is_text(value) ? text(value) : "";
    if (is_text(value) && !words.starts_with(kKey))
      throw WrongArgument(call.places[k], "a text names a column: \"heading: NAME\"");
    if (is_text(value)) {
      request.names.emplace_back(trimmed(words.substr(kKey.size())));
      continue;
    }
    check_value(request, value, call.places[k]);
    request.values.push_back(value);
    request.places.push_back(call.places[k]);
  }
  if (request.values.empty()) throw WrongArgument(call.span, "there is nothing to write");
  return request;
}

// Numbers round-trip; those that are not finite are written as most programs read them.
void append_real(std::string& text, double x) {
  if (std::isfinite(x))
    fmt::format_to(std::back_inserter(text), "{}", x);
  else
    text.append(std::signbit(x) ? "-" : "").append(std::isnan(x) ? "NaN" : "Inf");
}

bool is_complex(const Value& v) {
  return is_number(v) ? v.im != 0.0 : matrix(v)->im != nullptr;
}

Number element(const Value& v, std::ptrdiff_t k) {
  return is_number(v) ? number(v) : Number(re_at(matrix(v), k), im_at(matrix(v), k));
}

void append_element(std::string& text, const Value& v, std::ptrdiff_t k) {
  const Number z = element(v, k);
  append_real(text, z.real());
  if (!is_complex(v)) return;
  if (!std::signbit(z.imag())) text += '+';
  append_real(text, z.imag());
  text += 'i';
}

// --- Tables ---

// A heading that reads back as what it is.
std::string cell_of(const std::string& heading) {
  const bool plain = !heading.empty() && heading.find_first_of(",;\t\"\n\r") == std::string::npos &&
                     heading[0] != '#' && heading[0] != '%' && !heading.starts_with("sep=") &&
                     !is_missing(heading) && !number_in(heading, '.') && !number_in(heading, ',');
  if (plain) return heading;
  std::string cell = "\"";
  for (const char c : heading) cell.append(c == '"' ? 2 : 1, c);
  return cell + "\"";
}

// What the call names a column, or else the name of its variable; with the unit.
std::string heading_text(const Machine& machine, const WriteRequest& request, std::size_t value,
                         std::ptrdiff_t col, std::size_t at) {
  const Value& v = request.values[value];
  const Span place = request.places[value];
  std::string name;
  if (at < request.names.size()) {
    name = request.names[at];
  } else {
    const std::string_view text = machine.text_at(place);
    const bool is_name = machine.find_variable(std::string(text)) != nullptr;
    name = is_name ? text : "column";
    if (!is_name || cols_of(v) > 1)
      name += fmt::format("{}{}", is_name ? "" : " ", is_name ? col + 1 : at + 1);
  }
  const Unit* const named = heading_of(name).unit;
  if (v.unit == nullptr || (named != nullptr && named->name() == v.unit->name())) return name;
  if (named != nullptr)
    throw WrongArgument(
        place, fmt::format("has the unit {}, its heading says {}", v.unit->name(), named->name()));
  return fmt::format("{} ({})", name, v.unit->name());
}

// The line of headings; none where neither names nor units ask for it.
std::string table_head(const Machine& machine, const WriteRequest& request, char separator) {
  std::string text;
  std::size_t cols = 0;
  for (const Value& v : request.values) cols += static_cast<std::size_t>(cols_of(v));
  if (cols > kColumnLimit.most)
    throw WrongArgument(request.places.back(),
                        fmt::format("{}: write its transpose", kColumnLimit.message));
  if (request.names.size() > cols)
    throw WrongArgument(request.places.back(),
                        fmt::format("there are {} and {}", counted(request.names.size(), "heading"),
                                    counted(cols, "column")));
  const bool headings =
      !request.names.empty() || std::any_of(request.values.begin(), request.values.end(),
                                            [](const Value& v) { return v.unit != nullptr; });
  std::size_t at = 0;
  for (std::size_t k = 0; headings && k < request.values.size(); ++k)
    for (std::ptrdiff_t j = 0; j < cols_of(request.values[k]); ++j, ++at)
      text +=
          cell_of(heading_text(machine, request, k, j, at)) + (at + 1 < cols ? separator : '\n');
  return text;
}

void write_rows(const Machine& machine, const WriteRequest& request, char separator,
                std::ostream& out) {
  const std::ptrdiff_t rows = rows_of(request.values[0]);
  std::string text;
  for (std::ptrdiff_t i = 0; i < rows && out; ++i) {
    if (machine.interrupted) throw Stopped();
    text.clear();
    for (const Value& v : request.values)
      for (std::ptrdiff_t j = 0; j < cols_of(v); ++j) {
        append_element(text, v, j * rows + i);
        text += separator;
      }
    text.back() = '\n';
    out << text;
  }
}

// --- Matrix Market ---

std::string matrix_market_head(const WriteRequest& request) {
  if (request.values.size() > 1)
    throw WrongArgument(request.places[1], "a Matrix Market file holds one matrix");
  if (!request.names.empty())
    throw WrongArgument(request.places[0], "a Matrix Market file has no headings");
  const Value& v = request.values[0];
  std::string text =
      fmt::format("%%MatrixMarket matrix array {} general\n", is_complex(v) ? "complex" : "real");
  if (v.unit != nullptr) text += fmt::format("{}{}\n", kUnitComment, v.unit->name());
  return text + fmt::format("{} {}\n", rows_of(v), cols_of(v));
}

void write_elements(const Machine& machine, const Value& v, std::ostream& out) {
  std::string text;
  for (std::ptrdiff_t k = 0; k < rows_of(v) * cols_of(v) && out; ++k) {
    if (machine.interrupted) throw Stopped();
    const Number z = element(v, k);
    text.clear();
    append_real(text, z.real());
    if (is_complex(v)) {
      text += ' ';
      append_real(text, z.imag());
    }
    out << text << '\n';
  }
}

// --- Files ---

// Row by row: a file takes no memory. What cannot be written whole is not written.
void write_file(Machine& machine, const WriteRequest& request, Span file_place) {
  const std::string& name = request.file;
  const bool is_table = name.ends_with(".csv") || name.ends_with(".tsv");
  if (!is_table && !name.ends_with(".mtx"))
    throw WrongArgument(file_place, "the name of a data file ends in .csv, .tsv or .mtx");
  const char separator = name.ends_with(".csv") ? ',' : '\t';
  const std::string head =
      is_table ? table_head(machine, request, separator) : matrix_market_head(request);

  efi::NewFile file = machine.files.create(name);
  if (file.error() != 0) machine.files.fail_to_write(name, file.error());
  efi::OutputBuffer buffer(file.descriptor(), &machine.interrupted);
  std::ostream out(&buffer);
  out << head;
  if (is_table)
    write_rows(machine, request, separator, out);
  else
    write_elements(machine, request.values[0], out);
  out.flush();
  if (machine.interrupted) throw Stopped();
  const int error = buffer.error() != 0 ? buffer.error() : file.commit();
  if (error != 0) machine.files.fail_to_write(name, error);
}

}  // namespace

Value write(Machine& machine, const Call& call) {
  try {
    const WriteRequest request = request_of(call);
    write_file(machine, request, call.places[0]);
    std::ptrdiff_t cols = 0;
    for (const Value& v : request.values) cols += cols_of(v);
    machine.note(
        fmt::format("{}: {} x {} written", request.file, rows_of(request.values[0]), cols));
    return object_value(&kNoValue);
  } catch (const Stopped&) {
    return machine.stopped(call.span);
  } catch (const WrongArgument& error) {
    return machine.fail(error.span, error.what());
  } catch (const FileError& error) {
    return machine.fail(call.places[0], error.what());
  }
}

}  // namespace worksheet
