// The list of units: their values, and what converts to what.
#include "host/units/unit_list.hpp"

#include <algorithm>
#include <fstream>

#include "host/text/text.hpp"
#include "host/units/unit.hpp"
#include "tests/host/sheet.hpp"

using worksheet::parse_unit;
using worksheet::Unit;

namespace {

// The lines of a file without those that begin with '#'.
std::vector<std::string> lines_of(const std::string& path) {
  std::ifstream file(MATRIX_SOURCE_DIR "/" + path);
  EXPECT_TRUE(file) << path;
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);)
    if (!line.starts_with("# ")) lines.push_back(line);
  return lines;
}

TEST(UnitList, ConvertByTheirDefinitions) {
  int count = 0;
  for (const std::string& line : lines_of("tests/data/conversions.csv")) {
    const std::size_t first = line.find(','), second = line.find(',', first + 1);
    const std::string from = line.substr(0, first);
    const std::string to = line.substr(first + 1, second - first - 1);
    if (from == "from") continue;
    const double exact = std::stod(line.substr(second + 1));
    for (const bool back : {false, true}) {
      const auto factor =
          worksheet::conversion(parse_unit(back ? to : from), parse_unit(back ? from : to));
      ASSERT_TRUE(factor) << line;
      EXPECT_NEAR((back ? 1 / *factor : *factor) / exact, 1.0, 1e-12) << line;
    }
    ++count;
  }
  EXPECT_GE(count, 150);
}

// A unit of the list in docs/units.md.
struct ListedUnit {
  std::string kind;
  std::vector<std::string> names;
  std::string value;
};

std::vector<ListedUnit> listed_units() {
  std::vector<ListedUnit> units;
  std::string kind;
  for (const std::string& line : lines_of("docs/units.md")) {
    if (line.starts_with("### ")) kind = line.substr(4);
    if (kind.empty() || !line.starts_with("| ") || line.starts_with("| symbol")) continue;
    ListedUnit unit = {kind, {}, ""};
    std::size_t end = line.rfind('|', line.size() - 2);
    const std::size_t start = line.rfind('|', end - 1) + 1;
    unit.value = worksheet::trimmed(line.substr(start, end - start));
    for (std::size_t at = line.find('`'); at < start; at = line.find('`', end + 1)) {
      end = line.find('`', at + 1);
      unit.names.push_back(line.substr(at + 1, end - at - 1));
    }
    if (unit.value != "has a zero of its own") units.push_back(unit);
  }
  return units;
}

const Unit* unit_of_kind(const std::string& kind) {
  const std::size_t at = kind.rfind(" in ");
  return at == std::string::npos ? nullptr : parse_unit(kind.substr(at + 4));
}

TEST(UnitList, AreListedWithTheirValues) {
  std::string text;
  for (const std::string& line : lines_of("docs/units.md")) text += line + "\n";
  const std::string list = worksheet::unit_list(true);
  if (!text.ends_with(list)) std::ofstream("units.md") << list;
  ASSERT_TRUE(text.ends_with(list))
      << "the list of units in docs/units.md should be that of units.md, here";
  const std::vector<ListedUnit> units = listed_units();
  EXPECT_GE(units.size(), 200u);
  for (const ListedUnit& unit : units)
    for (const std::string& name : unit.names) {
      const auto there = worksheet::conversion(parse_unit(name), unit_of_kind(unit.kind));
      const auto back = worksheet::conversion(unit_of_kind(unit.kind), parse_unit(name));
      ASSERT_TRUE(there && back) << name;
      EXPECT_NEAR(*there / std::stod(unit.value), 1.0, 1e-14) << name;
      EXPECT_NEAR(*there * *back, 1.0, 1e-15) << name;
    }
}

// Conversion works exactly within a kind: each has a dimension of its own, but for these two, and
// for what counts turns.
TEST(UnitList, ConvertWithinTheirKindOnly) {
  const std::vector<ListedUnit> units = listed_units();
  const auto is = [](const ListedUnit& unit, std::initializer_list<const char*> names) {
    return std::find(names.begin(), names.end(), unit.names.front()) != names.end();
  };
  std::vector<const Unit*> parsed;
  for (const ListedUnit& unit : units) parsed.push_back(parse_unit(unit.names.front()));
  for (std::size_t i = 0; i < units.size(); ++i)
    for (std::size_t j = 0; j < units.size(); ++j) {
      const ListedUnit &a = units[i], &b = units[j];
      const bool of_surfaces = (a.kind == "Force per length, in N/m" && is(b, {"langley"})) ||
                               (b.kind == "Force per length, in N/m" && is(a, {"langley"}));
      const bool of_turns =
          (is(a, {"Hz"}) && is(b, {"rpm", "rps"})) || (is(b, {"Hz"}) && is(a, {"rpm", "rps"}));
      const auto factor = worksheet::conversion(parsed[i], parsed[j]);
      EXPECT_EQ(factor.has_value(), a.kind == b.kind || of_surfaces || of_turns)
          << a.names.front() << " to " << b.names.front();
    }
}

}  // namespace
