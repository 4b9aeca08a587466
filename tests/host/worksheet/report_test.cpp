// Reports: what stands on the page, that it is well-formed, and that it is whole at any time.
#include "fmt/format.h"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

constexpr const char* kXmllint = "xmllint --nonet";

// A report of the worksheet, checked to be well-formed.
struct Page {
  explicit Page(const std::string& text) : sheet(directory.write("s.ws", text)) {
    file = directory.path("r.html");
    run = run_program({"--html", file, sheet});
    EXPECT_EQ(test::shell(fmt::format("{} --noout '{}'", kXmllint, file)), "");
    html = directory.read("r.html");
  }

  // The value of an XPath expression, in which h: is HTML, m: MathML and s: SVG.
  std::string at(const std::string& expression) const {
    std::string path = expression;
    for (const char* prefix : {"h:", "m:", "s:"})
      for (std::size_t k = path.find(prefix); k != std::string::npos; k = path.find(prefix, k)) {
        const std::size_t end = std::min(
            path.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789", k + 2), path.size());
        path.replace(k, end - k,
                     fmt::format("*[local-name()='{}']", path.substr(k + 2, end - k - 2)));
      }
    std::string found = test::shell(fmt::format("{} --xpath \"{}\" '{}'", kXmllint, path, file));
    while (found.ends_with('\n')) found.pop_back();
    return found;
  }

  Directory directory;
  std::string sheet, file, html;
  ProgramRun run;
};

struct Fact {
  const char* path;
  const char* value;
};

TEST(Report, ShowsTextStatementsValuesPicturesAndErrors) {
  const Page page(
      "## Loads & <b>stresses</b>\n"
      "# A paragraph over\n# two lines, with `code < 1`.\n#\n# - first\n# - second\n#\n#     "
      "--[m]--\n"
      "\n### Part\n"
      "F = 2.5e-8{kN/m^2}  # the <load>\n"
      "z = [1, -2i; 3 - 4i, [1, 2]]\n"
      "H = matrix(30, 40, h)\n"
      "P, L, U = lu([4, 1; 2, 3])\n"
      "t = \"</script><!-- \\\"&amp;\"\n"
      "h(i, j) = length([i, j; 1, 2])  # in a function\n"
      "1 + h(2, 3)\n"
      "tr([1, 2])\n"
      "h(i, j) = 1/(i + j + 1)\n"
      "H = matrix(30, 40, h)\n"
      "2 + * 3\n"
      "plot([1, 2]{s}, [3, 4], \"]]><x>\", [1, 2]{s}, [5, 6])\n"
      "[1, 2;  # rows\n 3, 0/0]\n"
      "# The end.\n");
  EXPECT_EQ(page.run.status, 1);
  const Fact facts[] = {
      {"string(//h:title)", "Loads & <b>stresses</b>"},
      {"count(//h:h1)", "1"},
      {"string(//h:p[2]/h:code | //h:main/h:p[1]/h:code)", "code < 1"},
      {"string(//h:main/h:p[1])", "A paragraph over two lines, with code < 1."},
      {"count(//h:li)", "2"},
      {"normalize-space(//h:pre[@class='drawing'])", "--[m]--"},
      {"string(//h:h3)", "Part"},
      {"string(//h:main/h:p[last()])", "The end."},
      {"count(//h:section)", "13"},
      // Values.
      {"string(//h:section[1]//h:span[@class='comment'])", "# the <load>"},
      {"string(//h:section[1]//m:math)", "F=2.5\u00D710\u22128kN/m2"},
      {"string(//h:section[2]//m:mtr[1]/m:mtd[2])", "\u22122i"},
      {"count(//h:section[2]//m:mtable//m:mtable//m:mtd)", "2"},
      {"count(//h:section[4]//m:mtable)", "3"},
      {"string(//h:section[4]//m:math[3]/m:mrow/m:mi)", "U"},
      {"string(//h:section[5]//m:mtext)", "\u201C</script><!-- \"&amp;\u201D"},
      {"count(//h:section[6]//m:math)", "0"},
      {"count(//h:section[10]//m:mtr)", "16"},
      {"string(//h:section[10]//m:munder/m:mtext)", "30 \u00D7 40"},
      {"string(//h:section[13]//h:pre)", "[1, 2;  # rows\n 3, 0/0]"},
      {"string(//h:section[13]//m:mtr[2])", "3NaN"},
      // Errors: the statement, the place in it, the message, links to them.
      {"count(//h:section[contains(@class, 'failed')])", "4"},
      {"string(//h:section[7]/h:pre)", "1 + h(2, 3)"},
      {"string(//h:section[7]/h:div//h:mark)", "length([i, j; 1, 2])"},
      {"string(//h:section[8]//h:p)", "Error: must be square (argument 1)"},
      {"string(//h:section[8]//h:mark)", "[1, 2]"},
      {"string(//h:section[11]//h:pre)", "2 + \u2038* 3"},
      {"string(//h:header/h:p[2])", "4 errors: line 13, line 17, line 18, line 21"},
      {"string(//h:section[@id = substring(//h:header//h:a[4]/@href, 2)]//h:mark)", "\u2038"},
      // The picture, in place.
      {"string(//h:section[12]//s:svg/@role)", "img"},
      {"count(//h:section[12]//s:path[contains(@stroke, 'var(--c')])", "2"},
      {"string(//h:section[12]//s:text[contains(., 'x')])", "]]><x>"},
      {"count(//@id[. = ../preceding::*/@id])", "0"},
      {"count(//@src | //h:link)", "0"},
  };
  for (const Fact& fact : facts) EXPECT_EQ(page.at(fact.path), fact.value) << fact.path;
  for (std::size_t at = page.html.find("http"); at != std::string::npos;
       at = page.html.find("http", at + 1))
    EXPECT_TRUE(page.html.substr(0, at).ends_with("xmlns=\"") ||
                page.html.substr(0, at).ends_with("xmlns:xlink=\""))
        << page.html.substr(at, 80);
}

TEST(Report, ShowsACommentBesideTheLastStatementOfItsLine) {
  const Page page("a = 1; b = \"# b\"; c = 2  # of c\n");
  EXPECT_EQ(page.at("string(count(//h:span[@class='comment']))"), "1");
  EXPECT_EQ(page.at("string(//h:section[3]//h:span[@class='comment'])"), "# of c");
}

TEST(Report, AlignsPointsAndBreaksLongMatrices) {
  const std::string text =
      "c = [1.25; -20; 3e-9; 2i]{kN}\nf(i, j) = i\nt = matrix(20, 1, f)\n"
      "w = [1, 2, 3, 4, 5, 6, 7] * 1.23456e-20i + 1.23456e-20\n";
  const Page page(text);
  const Fact facts[] = {
      {"string(//h:section[1]//m:mtr[2]/m:mtd/m:mrow/m:mphantom[1])", ".00"},
      {"string(//h:section[1]//m:mtr[3]/m:mtd/m:mrow/m:mphantom[1])", ".00"},
      {"string(//h:section[1]//h:div[@class='formula']/m:math)", "kN"},
      {"count(//h:section[3]//m:mtr)", "16"},
      {"count(//h:section[4]//m:mtd) < 7", "true"},
  };
  for (const Fact& fact : facts) EXPECT_EQ(page.at(fact.path), fact.value) << fact.path;
  run_program({"--all", "--html", page.file, page.sheet});
  EXPECT_EQ(page.at("count(//h:section[3]//h:tr)"), "20") << "a table breaks between pages";
  EXPECT_EQ(page.at("count(//h:section[4]//m:mtd)"), "7");
}

TEST(Report, HoldsTextThatIsNoUtf8) {
  const Page page(
      "# \xFF\xC0\x80 \x01 \xED\xA0\x80 \u00E9\nt = \"\x02\xF0\x9D\x94\xB8\"\nu = \"\u00E9\"\n");
  EXPECT_EQ(page.at("count(//h:section[1]//h:code[contains(., '\uFFFD \u00E9')])"), "1");
  EXPECT_EQ(page.at("string(//h:section[2]//h:p)"),
            "Error: this is not text in UTF-8 (line 2, column 6)");
  EXPECT_EQ(page.at("string(//h:section[3]//m:mtext)"), "\u201C\u00E9\u201D");
}

TEST(Report, LeavesTheOtherOutputAsItIs) {
  const Directory directory;
  const std::string sheet = directory.write("s.ws", "x = [1, 2]\nlength([1, 2; 3, 4])\n");
  for (const char* form : {"--json", "--digits=3"}) {
    const ProgramRun without = run_program({form, sheet});
    const ProgramRun with = run_program({form, "--html", directory.path("r.html"), sheet});
    EXPECT_EQ(with.out, without.out);
    EXPECT_EQ(with.status, 1);
  }
  EXPECT_EQ(run_program({"--html", directory.path("e.html"), "-e", "1 + 2"}).status, 0);
  EXPECT_NE(directory.read("e.html").find("<mn>3</mn>"), std::string::npos);
}

TEST(Report, IsRefusedWhereItCannotBeWritten) {
  const Directory directory;
  const std::string sheet = directory.write("s.ws", "1\n");
  const Fact cases[] = {{"s.ws", "the report would replace the worksheet"},
                        {"", "no regular file"},
                        {"none/r.html", "No such file or directory"}};
  for (const Fact& c : cases) {
    const ProgramRun run = run_program({"--html", directory.path(c.path), sheet});
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find(c.value), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "");
  }
  EXPECT_EQ(directory.read("s.ws"), "1\n");
}

}  // namespace
