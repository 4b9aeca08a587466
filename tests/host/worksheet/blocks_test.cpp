// Arrays and blocks of the worksheet language: element operators, ranges, parts, loops.
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

using Blocks = InSheet;

TEST_F(Blocks, OperatorsElementByElement) {
  expect({
      {"A = [1, 2; 3, 4]\nA .* A", "[1 4; 9 16]"},
      {"A ./ [2, 2; 2, 2]", "[0.5 1; 1.5 2]"},
      {"2.^[1, 2]", "[2 4]"},
      {"[1, 2; 3, 4] .^ [2; 1]", "[1 4; 3 4]"},
      {"[1; 2] .* [1, 10, 100]", "[1 10 100; 2 20 200]"},
      {"([1, 2]{m}) .^ 2", "[1 4] {m^2}"},
      {"A .* [1, 2, 3]", "error: '.*' needs equal shapes, not 2 x 2 and 1 x 3 (0, 0)"},
      {"[1, 2]^2",
       "error: the power of a matrix needs a square one, not 1 x 2; '.^' works element by element "
       "(0, 0)"},
      {"2^A",
       "error: '^' takes a square matrix to an integer power; '.^' works element by element "
       "(0, 0)"},
      {"!([0, 2] > 1)", "[1 0]"},
      {"-!-0", "-1"},
      {"[0, 2] && [1, 1] || 0", "[0 1]"},
      {"1 || nonsense", "1"},
      {"0 && nonsense", "0"},
      {"1{m} && 1", "error: '&&' needs plain values, not m (0, 0)"},
      {"1 < 2 && 3 != 4", "1"},
      {"[4, 1; 2, 3] \\ [1, 2; 2, 4]", "[0.1 0.2; 0.6 1.2]"},
      {"([1, 0; 0, 2]{N/m}) \\ ([3; 4]{N})", "[3; 2] {m}"},
      {"2 \\ 6", "3"},
      {"[1, 2, 3; 4, 5, 6] \\ [1; 2]",
       "error: '\\' does not solve for 2 x 3 and 2 x 1: there are more unknowns than equations "
       "(0, 0)"},
      {"x = [1, 0; 1, 1; 1, 2] \\ [1; 2; 3]\nmax(abs(x - [1; 1])) < 1e-14", "1"},
  });
}

TEST_F(Blocks, RangesAndParts) {
  expect({
      {"0:3", "[0; 1; 2; 3]"},
      {"3:-1:1", "[3; 2; 1]"},
      {"rows(0:0.1:6)", "61"},
      {"(0:0.1:0.3)[3] <= 0.3", "1"},
      {"rows(1:0)", "0"},
      {"1:0", "[]"},
      {"0{m}:50{cm}:1{m}", "[0; 0.5; 1] {m}"},
      {"0:1{m}", "error: a range in m needs a step, as in 0{m}:0.1{m}:6{m} (0, 0)"},
      {"0{m}:1{s}:2{m}", "error: a range has one unit, not m and s (0, 0)"},
      {"0:0:1", "error: the step of a range is not 0 (0, 0)"},
      {"0:1/0", "error: a range is made of finite real numbers (0, 0)"},
      {"A = [1, 2, 3; 4, 5, 6]{m}\nA[1, :]", "[4 5 6] {m}"},
      {"A[:, end]", "[3; 6] {m}"},
      {"A[0, end - 1:end]", "[2 3] {m}"},
      {"A[:]", "[1; 4; 2; 5; 3; 6] {m}"},
      {"A[[1, 0], [0; 2]]", "[4 6; 1 3] {m}"},
      {"A[0:1, 1:2] == submatrix(A, 0, 1, 1, 2)", "[1 1; 1 1]"},
      {"v = 10:10:50\nv[end:-2:0]", "[50; 30; 10]"},
      {"v'[1:2]", "[20 30]"},
      {"v[v[0]/10 + 1]", "30"},
      {"v[end - (1:3)[end] + 1]", "30"},
      {"max(v[1:0])", "error: must have elements (0, 0)"},
      {"v[3:5]", "error: index 5 is outside of 0 to 4 (0, 0)"},
      {"v[0.5:2]", "error: an index must be an integer (0, 0)"},
      {"ORIGIN = 1\nv[1:2]", "[10; 20]"},
      {"v[end]", "50"},
      {"ORIGIN = 0\n[[1, 2], \"t\"; 3, 4][:, 0]", "[[1 2]; 3]"},
      {"end + 1", "syntax: end without a block (column 1)"},
      {"1 + (end)", "syntax: end as a number stands in an index only (column 6)"},
  });
}

TEST_F(Blocks, AssignmentToParts) {
  expect({
      {"A = 0*identity(3)\nB = A\nA[1, 2] = 5", "[0 0 0; 0 0 5; 0 0 0]"},
      {"B", "[0 0 0; 0 0 0; 0 0 0]"},
      {"A[0:1, 0:1] += [1, 2; 3, 4]", "[1 2 0; 3 4 5; 0 0 0]"},
      {"A[2, :] = [7; 8; 9]", "[1 2 0; 3 4 5; 7 8 9]"},
      {"A[:, 0] *= 2", "[2 2 0; 6 4 5; 14 8 9]"},
      {"A[[2, 0], :] = A[[0, 2], :]", "[14 8 9; 6 4 5; 2 2 0]"},
      {"C = A\nA[:] = 1\nC[0, 0]", "14"},
      {"A[0:1, 0:1] = [1, 2, 3]", "error: a 2 x 2 part does not take a 1 x 3 matrix (0, 0)"},
      {"B[:] = 1:9", "[1 4 7; 2 5 8; 3 6 9]"},
      {"B[:] = 1:8", "error: a 3 x 3 part does not take a 8 x 1 matrix (0, 0)"},
      {"A[3, 0] = 1", "error: index 3 is outside of 0 to 2 (0, 0)"},
      {"A[0, 0] = \"t\"", "error: A holds numbers, not text (0, 0)"},
      {"A[0, 0] = 1{m}", "error: A holds plain numbers, not m (0, 0)"},
      {"none[0] = 1", "error: unknown name: none (0, 0)"},
      {"s = 1\ns[0] = 1", "error: a number has no elements (0, 0)"},
      {"s += 2", "3"},
      {"s /= 2", "1.5"},
      {"v = [0; 0]\nv[1] = 3{kN}", "[0; 3] {kN}"},
      {"v[0] -= 500{N}", "[-0.5; 3] {kN}"},
      {"v[0] = 0", "[0; 3] {kN}"},
      {"z = [1, 2]\nz[0] = 1i", "[0+1i 2 complex]"},
      {"z[0] = 3\nz < 4", "[1 1]"},
      // Nothing is shared: not with the parts of a joined value, nor with what a nested array
      // holds.
      {"X = lu([4, 1; 2, 3])\nP, L, U = X\nL[1, 0] = 9\nP, M, U = X\nM", "[1 0; 0.5 1]"},
      {"N = [[1, 2], \"t\"]\na = N[0]\na[0] = 7\nN", "[[1 2] \"t\"]"},
      {"N[1] = [5]", "[[1 2] [5]]"},
      {"a[0] = 8\nN[0, 1] = a\na[0] = 9\nN", "[[1 2] [8 2]]"},
      {"f(M) = M\nb = [1, 2]\nc = f(b)\nb[0] = 5\nc", "[1 2]"},
      {"for x = b; b[:] = x; end\nb", "[2 2]"},
  });
}

TEST_F(Blocks, LoopsAndBranches) {
  expect({
      {"s = 0\nfor k = 1:10\n  s += k\nend\ns", "55"},
      {"for k = 1:10; if mod(k, 2) == 0; continue; end; if k > 6; break; end; s -= k; end; s",
       "46"},
      {"n = 0\nwhile n < 1000\n  n += 1 # one more\n\n  if n == 7\n    break\n  end\nend\nn", "7"},
      {"g = \"\"\nfor x = [0.5, 2, 7]\n if (x > 5)\n  g = \"big\"\n elseif x > 1\n"
       "  m = x\n else\n  l = x\n end\nend\n[l, m]",
       "[0.5 2]"},
      {"g", "\"big\""},
      {"for x = 0{m}:1{m}:2{m}; last_x = x; end; last_x", "2 {m}"},
      {"for x = 1:0; never = 1; end; never", "error: unknown name: never (0, 0)"},
      {"if(s > 0, 1, 2)", "1"},
      {"if(\n1 > 2,\n3, 4)", "4"},
      {"if (1, 2, 3) + 1 == 3; fine = 1; end", "syntax: end without a block (column 34)"},
      {"for x = [1, 2; 3, 4]; end",
       "error: a loop runs through a range or a vector, not a 2 x 2 matrix (0, 0)"},
      {"if [1, 2]; end", "error: a condition must be a plain real number (0, 0)"},
      {"for ORIGIN = [1i]; end", "error: ORIGIN must be a plain real number (0, 0)"},
      {"for k = 1:3; f(x) = k; end", "syntax: a function is defined outside of blocks (column 14)"},
      {"while 1; x = 3 break; end", "syntax: unexpected text (column 16)"},
      {"break", "syntax: break stands in a loop only (column 1)"},
      {"if 1; break; end", "syntax: break stands in a loop only (column 7)"},
      {"while = 3", "syntax: while is a reserved word (column 1)"},
      {"else", "syntax: else without a block (column 1)"},
      {"f(x, y) = (t = x^2; t + y)\nf(3, 1)", "10"},
      {"h(A) = (\n  Q, R = qr(A);\n  A = R*2;\n  A[0, 0])\nh([2])", "4"},
      {"t", "error: unknown name: t (0, 0)"},
      {"fact(n) = (m = n - 1; if(n < 2, 1, n*fact(m)))\nfact(20)", "2.43290200817664e+18"},
      {"x = (t = 1; t)",
       "syntax: names within parentheses belong to the body of a function (column 6)"},
  });
}

// An error inside a block is shown there; what was assigned stays, and the sheet goes on.
TEST_F(Blocks, ErrorsSayWhere) {
  EXPECT_EQ(sheet.shown("v = [1; 2]\nfor k = 0:5\n  w = k\n  s = v[k] + 1\nend"),
            "error: index 2 is outside of 0 to 1\n    4 |   s = v[k] + 1\n                ^\n");
  sheet.run("for k = 0:5\n  v[k] = 0\nend");
  EXPECT_EQ(sheet.member("/error_line"), "2");
  EXPECT_EQ(sheet.brief("w"), "2");
  EXPECT_EQ(sheet.shown("x = 1\nfor k = 0:5\n  if k > 2\n    x = 2\n  end\ny = 5\n"),
            "error: line 2, column 1: this for has no end\n    2 | for k = 0:5\n        ^\n");
  EXPECT_EQ(sheet.shown("for k = 0:5\n  x = (1 + 2\n  y = 3\nend"),
            "error: line 2, column 13: expected ')'\n    2 |   x = (1 + 2\n"
            "                    ^\n");
  sheet.run("x = (1 + 2\nfor k = 1:3\n  x = k\nend\nx; y = x + 1;\n;\ny");
  EXPECT_EQ(sheet.briefs(),
            "1: syntax: expected ')' (column 11)\n2: none quiet\n5: 3 quiet\n5: 4 quiet\n7: 4\n");
  EXPECT_EQ(sheet.shown("x = 1; y = 2;"), "");
  EXPECT_EQ(sheet.shown("a = 1; b = nothing_known"),
            "error: unknown name: nothing_known\n    1 |        b = nothing_known\n"
            "                   ^^^^^^^^^^^^^\n");
}

// Values that no variable keeps are reclaimed pass by pass.
TEST_F(Blocks, LoopsDoNotGather) {
  EXPECT_EQ(sheet.brief("A = identity(40)\nfor k = 1:3000\n  A = A * 1\n  B = A + k\n"
                        "  B[0, 0] = k\n  for x = A[:, 0]; y = [x, k]; end\nend\nB[0, 0]"),
            "3000");
  EXPECT_LT(sheet.machine().store.size(), 400u);
  EXPECT_EQ(sheet.brief("n = 0; m = A + 1; while n < 3000\n  n += tr(A)/40\nend; n"), "3000");
  EXPECT_LT(sheet.machine().store.size(), 400u);
}

}  // namespace
