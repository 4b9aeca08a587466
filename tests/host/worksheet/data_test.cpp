// Matrices from files.
#include <cmath>
#include <fstream>
#include <optional>

#include "fmt/format.h"
#include "host/text/numbers.hpp"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

struct FileCase {
  const char* content;
  const char* value;  // Or what follows the file's name in the error.
};

class Data : public InSheet {
 protected:
  // Reads each content as a file of its own.
  void expect_matrices(std::initializer_list<FileCase> cases) {
    for (const FileCase& c : cases) {
      const std::string path = directory.write("data", c.content);
      std::string value = sheet.brief("read(\"data\")");
      if (const std::size_t at = value.find(path); at != std::string::npos)
        value.erase(at, path.size());
      EXPECT_EQ(value, c.value) << c.content;
    }
  }
};

TEST_F(Data, Tables) {
  expect_matrices({
      {"1,2\n3,4\n", "[1 2; 3 4]"},
      {"1\t-2e3\r\n+.5\t4\r\n", "[1 -2000; 0.5 4]"},
      {"\xEF\xBB\xBFx;\"y\"\n# units: mm\n1; 2\n\n3;inf", "[1 2; 3 inf]"},
      {"\"1\", 1+2i\n-1e-3j, 2e+1-1e+1i", "[1 1+2i; 0-0.001i 20-10i complex]"},
      {"7", "[7]"},
      {"1,2\n3",
       "error: , line 2: 1 cell where 2 are due; one that holds a separator stands in quotation "
       "marks (0, 0)"},
      {"1,,\n,1e-400,\n", "[1 nan; nan 0]"},
      {"a,b\n", "error: : the file ends without a row of numbers (0, 0)"},
      {"a,,\n ,,\n", "error: : the file ends without a row of numbers (0, 0)"},
      {"", "error: : the file is empty (0, 0)"},
  });
}

TEST_F(Data, MatrixMarket) {
  expect_matrices({
      {"\xEF\xBB\xBF%%MatrixMarket matrix array unsigned-integer general\n% unit: kN/m\n1 "
       "2\n3\n+4\n",
       "[3 4] {kN/m}"},
      {"%%MatrixMarket matrix array real general\n% note\n2 2\n1\n2\n3\n4\n", "[1 3; 2 4]"},
      {"%%MatrixMarket matrix coordinate integer general\n2 3 2\n1 3 7\n2 1 -1\n",
       "[0 0 7; -1 0 0]"},
      {"%%MatrixMarket MATRIX Array complex Hermitian\n2 2\n1 0\n2 3\n4 0\n",
       "[1 2-3i; 2+3i 4 complex]"},
      {"%%MatrixMarket matrix coordinate pattern symmetric\n2 2 2\n1 1\n2 1\n", "[1 1; 1 0]"},
      {"%%MatrixMarket matrix coordinate real skew-symmetric\n3 3 1\n3 1 5\n",
       "[0 0 -5; 0 0 0; 5 0 0]"},
      {"%%MatrixMarket matrix array real skew-symmetric\n2 2\n5\n", "[0 -5; 5 0]"},
      {"%%MatrixMarket matrix coordinate real symmetric\n2 2 2\n1 1 1\n1 1 2\n", "[3 0; 0 0]"},
  });
}

TEST_F(Data, MalformedMatrixMarketNamesTheLine) {
  expect_matrices({
      {"%%Matrix matrix array real general\n1 1\n1\n",
       "error: , line 1: the first line is not that of a Matrix Market matrix (0, 0)"},
      {"%%MatrixMarket vector array real general\n",
       "error: , line 1: the first line is not that of a Matrix Market matrix (0, 0)"},
      {"%%MatrixMarket matrix array quaternion general\n1 1\n",
       "error: , line 1: \"quaternion\" is not known here (0, 0)"},
      {"%%MatrixMarket matrix array pattern general\n1 1\n",
       "error: , line 1: an array cannot be a pattern (0, 0)"},
      {"%%MatrixMarket matrix array real general\n% note\n2\n",
       "error: , line 3: expected the matrix's size (0, 0)"},
      {"%%MatrixMarket matrix array real general\n-2 2\n",
       "error: , line 2: \"-2\" is not a count (0, 0)"},
      {"%%MatrixMarket matrix array real symmetric\n1 2\n1\n2\n",
       "error: , line 2: a matrix of this kind must be square (0, 0)"},
      {"%%MatrixMarket matrix array real general\n2 1\n1\n",
       "error: , line 3: the file ends before the last entry (0, 0)"},
      {"%%MatrixMarket matrix array real general\n1 1\n1\n2\n",
       "error: , line 4: text behind the last entry (0, 0)"},
      {"%%MatrixMarket matrix coordinate real general\n2 2 1\n3 1 1\n",
       "error: , line 3: element (3, 1) lies outside of the matrix (0, 0)"},
      {"%%MatrixMarket matrix coordinate complex general\n2 2 1\n1 1 1\n",
       "error: , line 3: 3 words where 4 are due (0, 0)"},
      {"%%MatrixMarket matrix coordinate integer general\n1 1 1\n1 1 1.5\n",
       "error: , line 3: \"1.5\" is not a whole number (0, 0)"},
      {"%%MatrixMarket matrix array unsigned-integer general\n1 1\n-1\n",
       "error: , line 3: \"-1\" is not a whole number without a sign (0, 0)"},
      {"%%MatrixMarket matrix coordinate real general\n9999999 9999999 0\n",
       "error: , line 2: 9999999 x 9999999 elements are too many: a matrix holds at most 536870911 "
       "(0, 0)"},
      {"%%MatrixMarket matrix array real general\n536870911 1\n1\n",
       "error: , line 2: the file is too short for that many entries (0, 0)"},
      {"%%MatrixMarket matrix coordinate real general\n536870911 1 1\n1 1 1\n",
       "error: , line 2: 536870911 x 1 elements are out of proportion to 1 entry (0, 0)"},
      {"%%MatrixMarket matrix coordinate real general\n99999999999999999999 1 0\n",
       "error: , line 2: \"99999999999999999999\" is not a count (0, 0)"},
  });
}

// Numbers of any length are rounded once; beyond the doubles lie zeros and errors.
TEST(Numbers, OfAnyLength) {
  const std::string zeros(400, '0');
  const std::pair<std::string, std::optional<double>> cases[] = {
      {"1" + zeros + "e-5", {}},
      {"1" + zeros + "e-400", 1.0},
      {zeros + "12.5", 12.5},
      {"0." + zeros + "1e401", 1.0},
      {zeros + ".0e99999", 0.0},
      {"1e-400", 0.0},
      {"-1e-400", -0.0},
      {"-0." + zeros + "1", -0.0},
      {"1e-99999999999999999999", 0.0},
      {"-1e99999999999999999999", {}},
      {"0.1" + zeros, 0.1},
      {"1e+400", {}},
      // Halfway between two doubles, and a little more.
      {"1.00000000000000011102230246251565404236316680908203125", 1.0},
      {"1.00000000000000011102230246251565404236316680908203125" + zeros + "1",
       1.0000000000000002}};
  for (const auto& [text, value] : cases) {
    const std::optional<double> read = worksheet::parse_real(text);
    EXPECT_EQ(read, value) << text;
    EXPECT_EQ(read && std::signbit(*read), value && std::signbit(*value)) << text;
  }
}

// Files as programs of many countries write them: tests/data/read.txt has a call on every other
// line, and below it what it gives.
TEST_F(Data, FilesOfOtherPrograms) {
  const std::string folder = MATRIX_SOURCE_DIR "/tests/data/";
  sheet.machine().files.directory = folder;
  std::ifstream table(folder + "read.txt");
  std::string given;
  for (std::string line; std::getline(table, line);) {
    if (line.starts_with("    ")) continue;
    given += line + '\n';
    if (line.starts_with('#')) continue;
    std::vector<std::string> texts = {sheet.brief(line)};
    for (int k = 0; !sheet.member(fmt::format("/notes/{}", k)).empty(); ++k)
      texts.push_back("note: " + sheet.member(fmt::format("/notes/{}", k)));
    for (std::string& text : texts) {
      if (const std::size_t at = text.find(folder); at != std::string::npos)
        text.erase(at, folder.size());
      given += "    " + text + '\n';
    }
  }
  EXPECT_EQ(given, directory.read(folder + "read.txt"));
}

// What is written reads back with the same bits and the same unit.
TEST_F(Data, WrittenAndReadAgain) {
  sheet.run(
      "n = sqrt(-1)/0\nv = [0.1; -1e300; 2^-1074]{m^(1/2)/s}\nw = [1; 2; 3]\n"
      "C = [1+2i, 1/0; n, -5e-324]\nt = [1e9]{Hz}");
  for (const char* name : {"v", "w", "C", "t", "v'"})
    for (const char* file : {"x.csv", "x.tsv", "x.mtx"}) {
      sheet.run(fmt::format("write(\"{}\", {})", file, name));
      EXPECT_EQ(sheet.value(fmt::format("read(\"{}\")", file)), sheet.value(name))
          << directory.read(file);
    }
  EXPECT_EQ(directory.names(), (std::vector<std::string>{"x.csv", "x.mtx", "x.tsv"}));
}

TEST_F(Data, WrittenTables) {
  sheet.run("t = [0; 0.5]{s}\nA = [1, 2; 3, 4]");
  const std::pair<const char*, const char*> files[] = {
      {"write(\"x.csv\", A)", "1,2\n3,4\n"},
      {"write(\"x.csv\", t, A)", "t (s),A1,A2\n0,1,2\n0.5,3,4\n"},
      {"write(\"x.csv\", t*2, A, \"heading: time, s\", \"heading: 2019\")",
       "\"time, s (s)\",\"2019\",A2\n0,1,2\n1,3,4\n"},
      {"write(\"x.tsv\", t, [1; 2], \"heading: t (s)\")", "t (s)\tcolumn 2\n0\t1\n0.5\t2\n"},
      {"write(\"x.mtx\", t)", "%%MatrixMarket matrix array real general\n% unit: s\n2 1\n0\n0.5\n"},
  };
  for (const auto& [call, content] : files) {
    EXPECT_EQ(sheet.brief(call), "none") << call;
    EXPECT_EQ(directory.read(directory.names().back()), content) << call;
    std::filesystem::remove(directory.path(directory.names().back()));
  }
  expect({
      {"write(\"x.txt\", 1)", "error: the name of a data file ends in .csv, .tsv or .mtx (0, 0)"},
      {"write(\"x.csv\", t, [1, 2])", "error: has 1 row, the first one 2 (0, 0)"},
      {"write(\"x.csv\", t, \"heading: t (kN)\")",
       "error: has the unit s, its heading says kN (0, 0)"},
      {"write(\"x.csv\", t, \"t\")", "error: a text names a column: \"heading: NAME\" (0, 0)"},
      {"write(\"x.csv\", [A, A])", "error: may not be nested (0, 0)"},
      {"write(\"x.mtx\", t, t)", "error: a Matrix Market file holds one matrix (0, 0)"},
      {"write(\"x.csv\")", "error: there is nothing to write (0, 0)"},
      {"write(t)", "error: the name of a file comes first (0, 0)"},
  });
  EXPECT_EQ(directory.names(), std::vector<std::string>());
}

TEST_F(Data, FilesThatCannotBeRead) {
  directory.write("wide.csv", std::string(std::size_t{1} << 20, ','));
  EXPECT_NE(sheet.brief("read(\"wide.csv\")").find("at most 1048576 columns"), std::string::npos);
  // The last sign alone can stand between the parts of a complex number.
  std::string signs(200000, '1');
  for (int k = 0; k < 100000; ++k) signs += "+1";
  directory.write("signs.csv", "x\n" + signs + "i\n");
  EXPECT_NE(sheet.brief("read(\"signs.csv\")").find("hold text"), std::string::npos);
  sheet.machine().files.directory = "/";
  EXPECT_EQ(sheet.brief("read(\"nonexistent\")"),
            "error: /nonexistent: cannot be read: no such file or directory (0, 0)");
  EXPECT_EQ(sheet.brief("read(\"tmp\")"), "error: /tmp: cannot be read: Is a directory (0, 0)");
  EXPECT_EQ(sheet.brief("read(\"proc/self/mem\")"),
            "error: /proc/self/mem: cannot be read: Input/output error (0, 0)");
  EXPECT_EQ(sheet.brief("read(3)"), "error: must be text: the name of a file (0, 0)");
}

}  // namespace
