#include "host/units/unit_list.hpp"

#include <algorithm>
#include <array>
#include <vector>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/units/unit_database.hpp"

namespace worksheet {

namespace {

using Line = std::array<std::string, 4>;

std::string listed(const std::vector<std::string>& names, const char* quote) {
  std::vector<std::string> all;
  for (const std::string& name : names) all.push_back(quote + name + quote);
  return joined(all, " ");
}

// The unit in which the values of a kind are given: what follows "in" in "Length, in m".
double scale_of_kind(const std::string& kind) {
  const std::size_t at = kind.rfind(" in ");
  if (at == std::string::npos) return 1.0;
  const Unit* const unit = parse_unit(kind.substr(at + 4));
  return unit == nullptr ? 1.0 : unit->scale();
}

Line line_of(const UnitEntry& entry, const char* quote) {
  const std::string value = entry.proportional
                                ? fmt::format("{:.15g}", entry.scale / scale_of_kind(entry.kind))
                                : "has a zero of its own";
  const std::string prefixes = entry.takes_all ? "all" : joined(entry.prefixes, " ");
  return {listed(entry.symbols, quote), listed(entry.names, quote), value, prefixes};
}

// The lines as a table with columns of even widths.
std::string table(std::vector<Line> lines) {
  lines.insert(lines.begin(), {"symbol", "name", "value", "prefixes"});
  std::array<std::size_t, 4> widths = {};
  for (const Line& line : lines)
    for (std::size_t k = 0; k < line.size(); ++k)
      widths[k] = std::max(widths[k], character_count(line[k]));
  std::string text;
  for (const Line& line : lines) {
    for (std::size_t k = 0; k < line.size(); ++k)
      text +=
          fmt::format("| {}{} ", line[k], std::string(widths[k] - character_count(line[k]), ' '));
    text += "|\n";
    if (&line != &lines.front()) continue;
    for (const std::size_t width : widths) text += fmt::format("|{}", std::string(width + 2, '-'));
    text += "|\n";
  }
  return text;
}

}  // namespace

std::string unit_list(bool markdown) {
  const auto& entries = unit_database().entries;
  std::string text;
  for (auto first = entries.begin(); first != entries.end();) {
    const auto last = std::find_if(
        first, entries.end(), [&](const UnitEntry& entry) { return entry.kind != first->kind; });
    std::vector<Line> lines;
    for (auto entry = first; entry != last; ++entry)
      lines.push_back(line_of(*entry, markdown ? "`" : ""));
    text += fmt::format("{}{}{}\n\n{}", text.empty() ? "" : "\n", markdown ? "### " : "",
                        first->kind, table(lines));
    first = last;
  }
  return text;
}

}  // namespace worksheet
