// Units: reading them, calculating with them, and the unit rules of the pack's rows.
#include "fmt/format.h"
#include "host/packs/unit_rule.hpp"
#include "host/units/unit.hpp"
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
      {"kN/KN", 3, "unknown unit: KN; did you mean kN or kn?"},
      {"Mpa", 0, "unknown unit: Mpa; did you mean MPa or mPa?"},
      {"kNm", 0, "unknown unit: kNm; did you mean kN m?"},
      {"m g0^2/kt", 7, "kt may be a knot or 1000 t; write kn or kilotonne"},
      {"m/s0", 2, "the power 0 leaves no unit"},
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
      {"degC", 0,
       "degC has a zero of its own; use K, or delta_degC and delta_degF for differences"},
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
  std::string factors = "m";
  for (int k = 0; k < 100; ++k) factors += "/m";
  EXPECT_THROW(parse_unit(factors), worksheet::UnitError);
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
      {"3{%} * 5{kN}", "150 {N}"},
      {"6{kN} / (2{m})^2", "1.5 {kPa}"},
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
      {"[1, 2]{m} * [3; 4]{N}", "[11] {N m}"},
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
  EXPECT_EQ(sheet.value("3{kN/m}"), R"({"kind":"scalar","re":3.0,"im":0.0,"unit":"kN/m"})");
}

// Zeros, angles, 1 x 1 matrices, and units in which results read well.
TEST_F(Units, MeanWhatTheySay) {
  sheet.run("r = [3; 4]{m}");
  expect({
      {"[4{m}, 0; 0, 4{mm}]", "[4 0; 0 0.004] {m}"},
      {"[0, 0; 0, 4{mm}]", "[0 0; 0 4] {mm}"},
      {"0 + 3{kN} - 0", "3 {kN}"},
      {"[0, 0] + [1, 2]{kN}", "[1 2] {kN}"},
      {"3{kN} > 0", "1"},
      {"3{kN} > 0*(1/0)", "error: '>' needs values of one unit: kN and no unit (0, 0)"},
      {"0 in {mm}", "0 {mm}"},
      {"mod(0, 2{m})", "0 {m}"},
      {"stack([0, 0], [1, 2]{m})", "[0 0; 1 2] {m}"},
      {"augment([1]{m}, [0])", "[1 0] {m}"},
      {"(r'*r)*r", "[75; 100] {m^3}"},
      {"[1, 2; 3, 4] + r'*r/1{m^2}", "[26 27; 28 29]"},
      {"r/(r'*r)", "[0.12; 0.16] {1/m}"},
      {"2^([1]*[2])", "4"},
      {"[2]^2", "[4]"},
      {"if([0]*[1], 1, 2)", "2"},
      {"r[[1]*[1]]", "[4] {m}"},
      {"[1, 2]*[1, 2]",
       "error: cannot multiply 1 x 2 by 1 x 2: the columns of the first are not as many "
       "as the rows of the second (0, 0)"},
      {"60{rpm} in {Hz}", "1 {Hz}"},
      {"1{Hz} + 60{rpm}", "2 {Hz}"},
      {"1{rad/s} in {Hz}",
       "error: rad/s cannot be shown in Hz; rad/s has an angle: divide by 1{turn} if "
       "turns are counted, by 1{rad} if radians are (0, 0)"},
      {"1{1/s} > 1{rpm}",
       "error: '>' needs values of one unit: 1/s and rpm; rpm has an angle: divide by "
       "1{turn} if turns are counted, by 1{rad} if radians are (0, 0)"},
      {"360{deg/s}/1{turn} in {Hz}", "1 {Hz}"},
      {"1{lm} in {cd}", "error: lm cannot be shown in cd; lm has an angle: divide by 1{sr} (0, 0)"},
      {"100{rad/s}*2{m}", "200 {m/s}"},
      {"100{rad/s}*2{s} + 1", "201 {rad}"},
      {"60{rpm}*10{N m}/pi", "20 {W}"},
      {"20{N m/rad}*0.5{rad} - 1{N m}", "9 {N m}"},
      {"30{deg} + 45", "error: '+' needs values of one unit: deg and no unit (0, 0)"},
      {"5{%} in {deg}", "error: % cannot be shown in deg (0, 0)"},
      {"180{deg} in {rad} in {turn}", "0.5 {turn}"},
      {"1{g0}*2{kg} in {N}", "19.6133 {N}"},
      {"10{V}/2{kOhm}", "5 {mA}"},
      {"-[1, 2000]{V}/2{kOhm}", "[-0.0005 -1] {A}"},
      {"0{V}/2{kOhm}", "0 {A}"},
      {"1e-30{V}/2{kOhm}", "5e-22 {pA}"},
      {"999.9999999999{V}*1{A}", "0.9999999999999 {kW}"},
      {"5{V}/2{kOhm} in {A}", "0.0025 {A}"},
      {"x = 5{V}/2{kOhm}\nx + 1{A}", "1.0025 {A}"},
      {"200{GPa}*8000{cm^4}", "16000 {kN m^2}"},
      {"3{MPa}*2{cm^3}", "6 {N m}"},
      {"200{GPa}*8000{cm^4}/(4{m})^3", "250 {kN/m}"},
      {"6{J}/2{m^2}", "3 {J/m^2}"},
      {"5{N}*3{mm}", "15 {N mm}"},
      {"0.5*4{kg}*(3{m/s})^2", "18 {J}"},
      {"2{kW}*3{h}", "6 {kWh}"},
      {"900{watt}*24{h}", "21.6 {kWh}"},
      {"7.5{kW}/1500{rpm}*pi", "150 {N m}"},
      {"2{bar}*5{L}", "1 {kJ}"},
      {"1000{kg/m^3}*1{g0}*10{m}", "98.0665 {kPa}"},
      {"60{mph}*2{h}", "120 {mi}"},
      {"100{psi}*3{in^2}", "300 {lbf}"},
      {"0.002*3{m}", "6 {mm}"},
      {"x = 3{m} in {m}\n0.002*x", "0.006 {m}"},
      {"2*30{deg}", "60 {deg}"},
      {"1/1{kOhm}", "1 {mS}"},
      {"1/20{Hz}", "50 {ms}"},
      {"2000{kg/m^3}*3{m^3}", "6000 {kg}"},
      {"4{kN}/2{in^2}", "2 {kN/in^2}"},
  });
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
    {"lsolve", "S{N/m}, v{N}", "mm", nullptr, nullptr},
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
    sheet.run(fmt::format("{}({})", row.name, row.arguments));
    EXPECT_NE(sheet.member("/value/kind"), "error") << row.name << ": " << sheet.member("");
    const std::string unit = sheet.member("/value/unit");
    EXPECT_EQ(unit.empty() ? "no unit" : unit, row.unit) << row.name;
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
  const worksheet::UnitArgument units[] = {{parse_unit("m")}, {}};
  for (const char* rule :
       {"", "(", "(%lambda (a b) (-EqDims a b)", "(%lambda (a) (-EqDims a))",
        "(%lambda (a b) (-EqDims c))", "(%lambda (a b) (-NoCheck a))", "(%lambda (a b) a)",
        "(%lambda (a b) (-EqDims))", "-NoCheck", "(-EqDims a)",
        "(%lambda (a b) (-DimsLikeRoot a 0))", "(%lambda (a b) (-EqDims a)) extra"})
    EXPECT_THROW(worksheet::apply_unit_rule(rule, units), worksheet::UnitRuleError) << rule;
}

}  // namespace
