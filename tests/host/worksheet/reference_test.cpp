// help and --functions.
#include "host/worksheet/help/reference.hpp"

#include <iterator>
#include <sstream>

#include "host/text/text.hpp"
#include "host/worksheet/functions/builtin.hpp"
#include "host/worksheet/output/help_text.hpp"
#include "tests/host/build_files.hpp"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

using Reference = InSheet;

TEST_F(Reference, HasASentenceOnEveryFunction) {
  const auto entries = worksheet::whole_reference(sheet.machine());
  std::vector<std::string> names = worksheet::builtin_names();
  for (const auto& pack : sheet.machine().packs)
    for (const worksheet::Row& row : pack->rows()) names.push_back(row.name);
  for (const std::string& name : names) {
    const worksheet::ReferenceEntry* const entry = worksheet::find_entry(entries, name);
    ASSERT_NE(entry, nullptr) << name;
    EXPECT_FALSE(entry->summary.empty()) << name;
    EXPECT_FALSE(entry->group.empty()) << name;
  }
}

TEST_F(Reference, IsReadFromMarkdown) {
  const auto entries = worksheet::read_reference(
      "# All\n\n## One\n\n### f(x), g_2(x, y)\n\nThe `f`\nof **x**. More.\n\n```\n## no "
      "group\n```\n"
      "## Two\nNot about h.\n### h' (hat)\nIts [end](#h)");
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0].group + "|" + entries[0].heading, "One|f(x), g_2(x, y)");
  EXPECT_EQ(entries[0].names, (std::vector<std::string>{"f", "g_2"}));
  EXPECT_EQ(entries[0].summary, "The f of x");
  EXPECT_EQ(entries[1].names, std::vector<std::string>{"hat"});
  EXPECT_EQ(entries[1].summary, "Its end");
}

TEST_F(Reference, HelpIsAStatement) {
  const std::string all = sheet.shown("help");
  for (const char* name : {"lsolve", "norm1", "sqrt", "heatmap", "statements"})
    EXPECT_NE(all.find(name), std::string::npos) << name;
  const std::string lsolve = sheet.shown("help lsolve");
  EXPECT_TRUE(lsolve.starts_with("lsolve(M, v)\n\nThe solution x of M·x = v")) << lsolve;
  EXPECT_NE(lsolve.find("    lsolve([4, 1; 2, 3], [1; 2]) = 2 x 1 matrix\n"), std::string::npos);
  EXPECT_NE(lsolve.find("unit rule (%lambda(a b)( -DimsLikeDiv b a ) )"), std::string::npos);
  EXPECT_NE(sheet.shown("help  genvals(K, M)").find("reads TOL"), std::string::npos);
  EXPECT_EQ(sheet.shown("\n\nf(x) = 2*x\nhelp f"), "f(x) = 2*x\n\nDefined in line 3.\n");
  EXPECT_EQ(sheet.brief("help rank").substr(0, 8), "\"rank(A)");
  EXPECT_EQ(sheet.shown("help nothing"),
            "error: there is no help on that; help alone lists everything\n"
            "    1 | help nothing\n        ^\n");
  // The name is free for worksheets.
  EXPECT_EQ(sheet.brief("helper = 2\nhelper"), "2");
  EXPECT_EQ(sheet.brief("help = 3"), "syntax: help is a reserved word (column 1)");
  // What it lists is what one writes.
  EXPECT_NE(all.find(" A^-1 "), std::string::npos) << all;
  EXPECT_EQ(all.find("inverse"), std::string::npos) << all;
  EXPECT_TRUE(sheet.shown("help A^-1").starts_with("A^-1 (inverse)"));
  EXPECT_NE(sheet.shown("help max").find("max(a, b, ...)"), std::string::npos);
}

TEST_F(Reference, LinesAreWrappedWithoutLoss) {
  const auto page = worksheet::help_page(sheet.machine(), "submatrix");
  ASSERT_TRUE(page);
  const std::string narrow = worksheet::help_text(*page, 40);
  const std::string wide = worksheet::help_text(*page, 1000);
  const auto words = [](const std::string& text) {
    std::istringstream in(text);
    return std::vector<std::string>(std::istream_iterator<std::string>(in), {});
  };
  EXPECT_EQ(words(narrow), words(wide));
  std::istringstream prose(narrow.substr(0, narrow.find("    ")));
  int lines = 0;
  for (std::string line; std::getline(prose, line); ++lines)
    EXPECT_LE(worksheet::character_count(line), 40u);
  EXPECT_GT(lines, 10);
}

TEST_F(Reference, TheProgramListsAndDescribes) {
  const ProgramRun list = run_program({"--functions"});
  EXPECT_NE(list.out.find("\n  genvals(M, N), genvecs(M, N)        The finite eigenvalues"),
            std::string::npos)
      << list.out;
  EXPECT_NE(run_program({"--functions", "max"}).out.find("(%lambda (a) (-EqDims a))"),
            std::string::npos);
  const ProgramRun unknown = run_program({"--functions", "nothing"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_EQ(unknown.out, "");
  const ProgramRun rows = run_program({"--functions", "--json"});
  EXPECT_NE(rows.member(36, ""), "");
  EXPECT_EQ(rows.member(37, ""), "");
  constexpr int kSubmatrix = 8;
  EXPECT_EQ(rows.member(kSubmatrix, "/name"), "submatrix");
  EXPECT_NE(rows.member(kSubmatrix, "/arguments/4"), "");
  EXPECT_EQ(rows.member(kSubmatrix, "/context"), "[\"ORIGIN\"]");
  EXPECT_EQ(rows.member(kSubmatrix, "/flags"), "12");
  EXPECT_EQ(rows.member(kSubmatrix, "/heading"), "submatrix(A, ir, jr, ic, jc)");
  EXPECT_EQ(rows.member(2, "/rule"), "null");
  // A pack without a reference is listed all the same.
  const ProgramRun bare = run_program({"--pack", tiny_pack("none"), "--functions"});
  EXPECT_NE(bare.out.find("twice(any)"), std::string::npos) << bare.out;
}

}  // namespace
