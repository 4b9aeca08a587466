// Units: reading them, calculating with them, and the unit rules of the pack's rows.
#include "fmt/format.h"
#include "host/packs/unit.hpp"
#include "host/packs/unit_rule.hpp"
#include "tests/host/sheet.hpp"

using namespace test;
using worksheet::parse_unit;
using worksheet::Unit;

namespace {

using Units = InSheet;
using UnitRules = InSheet;

TEST_F(Units, AreReadAndWritten) {
  const std::pair<const char*, const char*> cases[] = {
      {"kN/m", "kN/m"},       {"N/mm^2", "N/mm^2"},       {"kN m", "kN m"},
      {"kN*m", "kN m"},       {"kN.m", "kN m"},           {"kN\u00B7m\u00B2", "kN m^2"},
      {" m2 s-1 ", "m^2/s"},  {"J/(kg K)", "J/(kg K)"},   {"1/s^2", "1/s^2"},
      {"m^(1/2)", "m^(1/2)"}, {"m\u207B\u00B2", "1/m^2"}, {"(m (s/m)^2)^2", "s^4/m^2"},
      {"m/s/s", "m/s^2"},     {"\u00B5m", "\u00B5m"},     {"m/m", "no unit"},
  };
  for (const auto& [text, name] : cases)
    EXPECT_EQ(worksheet::unit_text(parse_unit(text)), name) << text;
}

TEST_F(Units, WhatIsNoneIsRefusedWithItsPlace) {
  const std::tuple<const char*, std::size_t, const char*> cases[] = {
      {"foo", 0, "unknown unit: foo"},
      {"kN/KN", 3, "unknown unit: KN"},
      {"", 0, "expected a unit"},
      {"m/", 2, "expected a unit"},
      {"5 m", 0, "expected a unit"},
      {"m^x", 2, "expected the power of a unit"},
      {"m^(1/0)", 6, "a power of a unit divides by zero"},
      {"m^99999", 5, "this unit is too large a power"},
      {"m^600 m^600", 11, "this unit is too large a power"},
      {"km^1000", 7, "this unit is too large a power"},
      {"(m", 2, "expected ')' in a unit"},
      {"m)", 1, "unexpected text in a unit"},
      {"degC", 0, "degC has an offset or a logarithmic scale; use a unit without"},
  };
  for (const auto& [text, offset, message] : cases) {
    try {
      parse_unit(text);
      ADD_FAILURE() << text;
    } catch (const worksheet::UnitError& error) {
      EXPECT_STREQ(error.what(), message);
      EXPECT_EQ(error.offset, offset) << text;
    }
  }
  EXPECT_THROW(parse_unit(std::string(1000, '(')), worksheet::UnitError);
}

TEST_F(Units, CombineInArithmetic) {
  expect({
      {"3{m} + 2{mm}", "3.002 {m}"},
      {"3{m} - 2{kg}", "error: '-' needs values of one unit: m and kg (0, 0)"},
      {"3{m} + 1", "error: '+' needs values of one unit: m and no unit (0, 0)"},
      {"1{m} > 999{mm}", "1"},
      {"3{m} * 2{mm}", "0.006 {m^2}"},
      {"2{kN/m} * 3{m}", "6 {kN}"},
      {"1{N/m} / 2{kg}", "0.5 {1/s^2}"},
      {"2{A} * 3{Ohm}", "6 {V}"},
      {"2{kN} * 3{m}", "6 {kN m}"},
      {"2{m} * 3{1/m}", "6"},
      {"3{%} * 5{kN}", "0.15 {kN}"},
      {"6{kN} / (2{m})^2", "1.5 {kN/m^2}"},
      {"9{m^2}^(1/2)", "3 {m}"},
      {"2{m}^0.123", "error: no such power of m (0, 0)"},
      {"2^(3{m})", "error: an exponent must be plain; it has m (0, 0)"},
      {"2^(1e6{%})", "inf"},
      {"x = 1{m^1000}", "1 {m^1000}"},
      {"x*x", "error: this unit is too large a power (0, 0)"},
      {"1/x/x", "error: this unit is too large a power (0, 0)"},
      {"x^1e300", "error: this unit is too large a power (0, 0)"},
      {"(x^(1/7))^(1/11)^(1/13)", "error: no such power of m^(1000/7) (0, 0)"},
      {"1{m^(1/999)}*1{m^(1/998)}", "error: this unit is too large a power (0, 0)"},
      {"sqrt(1{m^(1/999)})", "error: this unit is too large a power (0, 0)"},
      {"cholesky([1]{m^(1/999)})",
       "error: cholesky gives no value: this unit is too large a power (0, 0)"},
      {"-3{m}", "-3 {m}"},
      {"2{kN m} in {J}", "2000 {J}"},
      {"2{m} in {s}", "error: m cannot be shown in s (0, 0)"},
      {"x = 1.5{m} in {mm}\nx", "1500 {mm}"},
      {"(3{m} in {mm}) + 1{m}", "4000 {mm}"},
      {"1{m} + 2{m} in {mm} in {cm}", "300 {cm}"},
      {"[max([1, 2]{m} in {mm}), 3{m}]", "[2000 3000] {mm}"},
      {"3 + (1{m} in {s})", "error: m cannot be shown in s (0, 0)"},
      {"2{m} in + 1", "syntax: expected a unit in braces (column 9)"},
      {"(3{m}){m}", "error: it has a unit already: m (0, 0)"},
      {"\"t\"{m}", "error: text takes no unit (0, 0)"},
      {"1{foo}", "syntax: unknown unit: foo (column 3)"},
      {"[1, 2; 3, 4]{kN/m}[1, 0]", "3 {kN/m}"},
      {"[1{m}, 20{cm}]", "[1 0.2] {m}"},
      {"[1{m}, 2]", "error: the elements of a matrix have one unit, not m and no unit (0, 0)"},
      {"[1{m}, \"t\"]", "error: the elements of a nested array have no units (0, 0)"},
      {"[[1], 2]{m}", "error: a matrix takes no unit (0, 0)"},
      {"[1, 2]{m} * [3; 4]{N}", "[11] {m N}"},
      {"sqrt(4{m^2})", "2 {m}"},
      {"sqrt(4{m})", "2 {m^(1/2)}"},
      {"abs(sin(30{deg}) - 0.5) < 1e-15", "1"},
      {"sin(1{m})", "error: sin needs a plain number here, not m (0, 0)"},
      {"mod(7{m}, 200{cm})", "1 {m}"},
      {"re(3{m}) + im(2i{m})", "5 {m}"},
      {"if(1{m}, 1, 2)", "error: a condition must be a plain real number (0, 0)"},
      {"f(i, j) = i*1{m}\nmatrix(2, 2, f)",
       "error: f gives a value in m; a plain one is needed (0, 3)"},
      {"TOL = 1{m}\neigenvals([1, 2; 2, 1])", "error: eigenvals needs TOL without a unit (0, 0)"},
  });
}

TEST_F(Units, AreShownToPeopleAndPrograms) {
  EXPECT_EQ(sheet.shown("(1 + 2i){V}"), "(1 + 2i) V\n");
  EXPECT_EQ(sheet.shown("A = [1, 2]{kN/m}"), "A = 1 x 2 matrix in kN/m\n  1  2\n");
  EXPECT_EQ(sheet.value("3{kN/m}").dump(), R"({"kind":"scalar","re":3.0,"im":0.0,"unit":"kN/m"})");
}

// For every row: arguments with units and the unit of the result, or the refusal; then arguments
// that are refused.
struct RowCase {
  const char* name;
  const char* arguments;
  const char* unit;  // "no unit" for a plain result.
  const char* refused;
  const char* reason;
};

constexpr const char* kS = "[4, 1; 1, 3]";

const RowCase kRows[] = {
    {"rows", "S{m}", "no unit", nullptr, nullptr},
    {"cols", "S{m}", "no unit", nullptr, nullptr},
    {"identity", "2", "no unit", "2{m}", "takes plain numbers: argument 1 has m"},
    {"last", "v{m}", "no unit", nullptr, nullptr},
    {"length", "v{m}", "no unit", nullptr, nullptr},
    {"max", "S{kN}", "kN", nullptr, nullptr},
    {"min", "S{kN}", "kN", nullptr, nullptr},
    {"reverse", "S{kN}", "kN", nullptr, nullptr},
    {"submatrix", "S{kN}, 0, 1, 0, 0", "kN", "S, 0, 1{m}, 0, 0",
     "takes plain numbers: argument 3 has m"},
    {"transpose", "S{kN}", "kN", nullptr, nullptr},
    {"tr", "S{kN}", "kN", nullptr, nullptr},
    {"augment", "S{m}, S{mm}", "m", "S{m}, S",
     "needs arguments with one unit: argument 1 has m, argument 2 has no unit"},
    {"stack", "S{m}, S{mm}", "m", "S{m}, S{kg}",
     "needs arguments with one unit: argument 1 has m, argument 2 has kg"},
    {"matrix", "2{%}*100, 2, f", "no unit", "2, 2{m}, f", "takes plain numbers: argument 2 has m"},
    {"cond1", "S{kN}", "no unit", nullptr, nullptr},
    {"cond2", "S{kN}", "no unit", nullptr, nullptr},
    {"conde", "S{kN}", "no unit", nullptr, nullptr},
    {"condi", "S{kN}", "no unit", nullptr, nullptr},
    {"cholesky", "S{m^2}", "m", nullptr, nullptr},
    {"diag", "v", "no unit", "v{m}", "takes plain numbers: argument 1 has m"},
    {"eigenvals", "S{kN/m}", "kN/m", nullptr, nullptr},
    {"eigenvecs", "S{kN/m}", "no unit", nullptr, nullptr},
    {"eigenvec", "S{kN/m}, (7 + sqrt(5))/2*1{kN/m}", "no unit", "S{kN/m}, 4.6",
     "needs arguments with one unit: argument 1 has kN/m, argument 2 has no unit"},
    {"genvals", "S{N/m}, S{kg}", "1/s^2", nullptr, nullptr},
    {"genvecs", "S{N/m}, S{kg}", "no unit", nullptr, nullptr},
    {"geninv", "S{m}", "1/m", nullptr, nullptr},
    {"lsolve", "S{N/m}, v{N}", "m", nullptr, nullptr},
    {"lu", "S", "no unit", "S{m}", "takes plain numbers: argument 1 has m"},
    {"norm1", "S{m}", "m", nullptr, nullptr},
    {"norm2", "S{m}", "m", nullptr, nullptr},
    {"norme", "S{m}", "m", nullptr, nullptr},
    {"normi", "S{m}", "m", nullptr, nullptr},
    {"qr", "S", "no unit", "S{m}", "takes plain numbers: argument 1 has m"},
    {"rank", "S{m}", "no unit", nullptr, nullptr},
    {"rref", "S", "no unit", "S{m}", "takes plain numbers: argument 1 has m"},
    {"svd", "S", "no unit", "S{m}", "takes plain numbers: argument 1 has m"},
    {"svds", "S", "no unit", "S{m}", "takes plain numbers: argument 1 has m"},
};

TEST_F(UnitRules, HoldForEveryRowOfTheLoadedPack) {
  ASSERT_EQ(std::size(kRows), sheet.machine().packs[0]->rows().size());
  sheet.run(fmt::format("S = {}\nv = [2; 1]\nf(i, j) = i", kS));
  for (const RowCase& row : kRows) {
    const Json value = sheet.value(fmt::format("{}({})", row.name, row.arguments));
    EXPECT_NE(value["kind"], "error") << row.name << ": " << value;
    EXPECT_EQ(value.contains("unit") ? value["unit"] : Json("no unit"), row.unit) << row.name;
    if (row.refused == nullptr) continue;
    EXPECT_EQ(sheet.brief(fmt::format("{}({})", row.name, row.refused)),
              fmt::format("error: {} {} (0, 0)", row.name, row.reason));
  }
}

// The numbers are brought to the unit in which they are meant.
TEST_F(UnitRules, ConvertNumbers) {
  EXPECT_EQ(sheet.brief("augment([1]{m}, [2]{mm})"), "[1 0.002] {m}");
  EXPECT_EQ(sheet.brief("matrix(200{%}, 1, abs1)\nabs1(i, j) = i"), "function");
  EXPECT_EQ(sheet.brief("matrix(200{%}, 1, abs1)"), "[0; 1]");
}

TEST_F(UnitRules, WhatMakesNoSenseIsRefused) {
  const Unit* const units[] = {parse_unit("m"), nullptr};
  for (const char* rule :
       {"", "(", "(%lambda (a b) (-EqDims a b)", "(%lambda (a) (-EqDims a))",
        "(%lambda (a b) (-EqDims c))", "(%lambda (a b) (-NoCheck a))", "(%lambda (a b) a)",
        "(%lambda (a b) (-EqDims))", "-NoCheck", "(-EqDims a)",
        "(%lambda (a b) (-DimsLikeRoot a 0))", "(%lambda (a b) (-EqDims a)) extra"})
    EXPECT_THROW(worksheet::apply_unit_rule(rule, units), worksheet::UnitRuleError) << rule;
}

}  // namespace
