// Formats of numbers: as they are shown, and how they are chosen.
#include "host/worksheet/output/number_text.hpp"
#include "tests/host/sheet.hpp"

using namespace test;
using worksheet::number_text;

namespace {

using Formats = InSheet;

TEST_F(Formats, OfNumbers) {
  const std::tuple<const char*, worksheet::Number, const char*> cases[] = {
      {"auto 3", 0.00012345, "0.000123"},
      {"auto 3", 2.5, "2.5"},
      {"fix 2", 1234.567, "1234.57"},
      {"fix 2", -0.001, "0.00"},
      {"fix 0", 2.6, "3"},
      {"fix 2", {1.0, -0.5}, "1.00 - 0.50i"},
      {"fix 1", 1e300, "1.0e+300"},
      {"sci 3", 1234.567, "1.23e+03"},
      {"sci 1", 0.0, "0e+00"},
      {"eng 4", 12345.678, "12.35e+03"},
      {"eng 3", 999.6, "1.00e+03"},
      {"eng 3", -0.00012, "-120e-06"},
      {"eng 1", 120.0, "100"},
      {"eng 3", 0.0, "0.00"},
      {"eng 2", 1.0 / 0.0, "inf"},
      {"eng 17", 5e-324, "4.9406564584124654e-324"},
  };
  for (const auto& [words, z, text] : cases) {
    const auto format = worksheet::parse_format(words);
    ASSERT_TRUE(format) << words;
    EXPECT_EQ(worksheet::format_words(*format), words);
    EXPECT_EQ(number_text(z, *format), text) << words;
  }
}

TEST_F(Formats, EngineeringChoosesThePrefix) {
  sheet.run("format eng 3");
  const std::pair<const char*, const char*> cases[] = {
      {"12345{N}", "12.3 kN\n"},
      {"0.5{kN} * 2{m}", "1.00 kN m\n"},
      {"[5, 20]{mm}", "1 x 2 matrix in mm\n  5.00  20.0\n"},
      {"[12000; 1]{N/m}", "2 x 1 matrix in kN/m\n  12.0\n   1.00e-03\n"},
      {"0.012{m} in {m}", "12.0e-03 m\n"},
      {"0.012{m^2}", "12.0e-03 m^2\n"},
      {"0.02{h}", "20.0e-03 h\n"},
      {"0{N}", "0.00 N\n"},
  };
  for (const auto& [text, shown] : cases) EXPECT_EQ(sheet.shown(text), shown) << text;
  // What is calculated with, and what programs read, does not depend on it.
  EXPECT_EQ(sheet.brief("x = 12345{N}\nx"), "12345 {N}");
}

TEST_F(Formats, AreStatements) {
  EXPECT_EQ(sheet.shown("format"), "note: format auto 6\n");
  EXPECT_EQ(sheet.shown("format  fix\t2"), "note: format fix 2\n");
  EXPECT_EQ(sheet.shown("2/3"), "0.67\n");
  for (const char* wrong : {"format fix", "format fix 18", "format sci 0", "format wide 3",
                            "format fix 2 3", "format fix -1"})
    EXPECT_TRUE(sheet.shown(wrong).starts_with("error: a format is fix, sci, eng or auto"))
        << wrong;
  EXPECT_EQ(sheet.shown("formats = 2\nformats"), "2.00\n");
  // The name is free.
  EXPECT_EQ(sheet.shown("format = 3\nformat"), "3.00\n");
}

TEST_F(Formats, AreOptionsAndHoldInReports) {
  directory.write("f.ws", "F = 12345{N}\nformat fix 1\n2/3\n");
  const std::string page = directory.path("f.html");
  const ProgramRun run =
      run_program({"--format", "eng", "3", directory.path("f.ws"), "--html", page});
  EXPECT_EQ(run.out, "F = 12.3 kN\nnote: format fix 1\n2/3 = 0.7\n");
  EXPECT_EQ(run.status, 0) << run.err;
  const std::string report = directory.read("f.html");
  EXPECT_NE(report.find("<mn>12.3</mn>"), std::string::npos) << report;
  EXPECT_NE(report.find("<mn>0.7</mn>"), std::string::npos) << report;
  EXPECT_EQ(run_program({"--format", "wide", "3", "-e", "1"}).status, 2);
}

}  // namespace
