// Matrices from files.
#include "fmt/format.h"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

struct Case {
  const char* content;
  const char* value;  // Or what follows the file's name in the error.
};

class Data : public InSheet {
 protected:
  // Reads each content as a file of its own.
  void expect_matrices(std::initializer_list<Case> cases) {
    for (const Case& c : cases) {
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
      {"1,2\n3", "error: , line 2: 1 fields where 2 are due (0, 0)"},
      {"1,2\n3,x4", "error: , line 2: \"x4\" is not a number (0, 0)"},
      {"1,2\n3,1e999", "error: , line 2: \"1e999\" is not a number (0, 0)"},
      {"1,\n", "error: , line 1: \"\" is not a number (0, 0)"},
      {"a,b\n", "error: , line 1: the file ends without a row of numbers (0, 0)"},
      {"", "error: : the file is empty (0, 0)"},
  });
}

TEST_F(Data, MatrixMarket) {
  expect_matrices({
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
      {"%%MatrixMarket matrix coordinate real general\n9999999 9999999 0\n",
       "error: : not enough memory (0, 0)"},
      {"%%MatrixMarket matrix coordinate real general\n99999999999999999999 1 0\n",
       "error: , line 2: \"99999999999999999999\" is not a count (0, 0)"},
  });
}

TEST_F(Data, FilesThatCannotBeRead) {
  sheet.machine().files.directory = "/";
  EXPECT_EQ(sheet.brief("read(\"nonexistent\")"),
            "error: /nonexistent: cannot be read: No such file or directory (0, 0)");
  EXPECT_EQ(sheet.brief("read(\"tmp\")"), "error: /tmp: cannot be read: Is a directory (0, 0)");
  EXPECT_EQ(sheet.brief("read(3)"), "error: must be text: the name of a file (0, 0)");
}

}  // namespace
