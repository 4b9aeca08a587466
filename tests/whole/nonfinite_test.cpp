// One NaN or infinity at each place of a 4 x 4 matrix: every function answers within a second, with
// what docs/non-finite.md says. Other extremes end in a value or a documented message.
#include <chrono>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "pack/frame/fault_mode.hpp"
#include "pack/frame/fp_control.hpp"
#include "tests/support/call_corpus.hpp"

namespace {

using namespace test;

// A kind of 4 x 4 matrix; the symmetric kinds take a bad element at (j, i) too.
enum class Shape { general, symmetric, complex };

std::vector<StdComplex> base_matrix(Shape shape) {
  const double general[] = {4, 1, -2, 0.5, 1, 5, 3, -1, 2, 3, 6, 2, -1, 0.5, 1, 7};
  std::vector<StdComplex> elements(16);
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t j = 0; j < 4; ++j) {
      const double x = general[4 * j + i];
      const double mirrored = general[4 * i + j];
      elements[4 * j + i] = shape == Shape::symmetric ? StdComplex((x + mirrored) / 2)
                            : shape == Shape::complex ? StdComplex(x, mirrored / 3)
                                                      : StdComplex(x);
    }
  }
  return elements;
}

aMatrix* with_bad_element(TestHost& host, Shape shape, std::size_t i, std::size_t j, double bad) {
  std::vector<StdComplex> elements = base_matrix(shape);
  elements[4 * j + i].real(bad);
  if (shape == Shape::symmetric) elements[4 * i + j].real(bad);
  if (shape == Shape::complex) return host.complex_matrix(4, 4, elements);
  std::vector<double> re;
  for (const StdComplex z : elements) re.push_back(z.real());
  return host.matrix(4, 4, re);
}

// A build that reads the status flags finds the same faults, but may name another one of several.
const bool kNamesFaults = matrix_pack::faults_trap();

std::string without_fault_names(std::string text) {
  for (const std::string name : {"floating point error", "overflow", "singularity"})
    for (std::size_t at; (at = text.find(name)) != std::string::npos;)
      text.replace(at, name.size(), "fault");
  // One fault is as good as two.
  const std::string twice = "\"fault\", \"fault\"";
  for (std::size_t at; (at = text.find(twice)) != std::string::npos;)
    text.replace(at, twice.size(), "\"fault\"");
  return text;
}

std::string outcome(const Anyval* value) {
  if (value->kind != kErrorKind) return "value";
  return '"' + std::string(static_cast<const aError*>(value)->message->text) + '"';
}

// The outcomes over all places, in alphabetical order.
std::string outcomes(const std::string& name, Shape shape, double bad) {
  CallCorpus corpus;
  std::set<std::string> seen;
  for (std::size_t place = 0; place < 16; ++place) {
    aMatrix* m = with_bad_element(corpus.host, shape, place % 4, place / 4, bad);
    calls::Arguments arguments = corpus.arguments_of(name, m);
    if (name == "eigenvec") arguments[1] = corpus.values.one;
    if (name == "genvals" || name == "genvecs")
      arguments[1] = with_bad_element(corpus.host, Shape::symmetric, 0, 0, 9);
    const auto start = std::chrono::steady_clock::now();
    seen.insert(outcome(corpus.function(name).call(arguments)));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)) << name;
  }
  std::string text;
  for (const std::string& one : seen) text += (text.empty() ? "" : ", ") + one;
  return text;
}

// The lines of the table in the document, as they should read. What does not depend on the kind of
// matrix is said once, unless `every_kind`.
std::vector<std::string> actual_table(bool every_kind) {
  std::vector<std::string> table;
  const std::pair<Shape, const char*> shapes[] = {
      {Shape::general, ""}, {Shape::symmetric, ", symmetric"}, {Shape::complex, ", complex"}};
  const std::set<std::string> takes_no_matrix = {"identity", "matrix", "last", "length", "diag"};
  for (int r = 0; r < numFuncs; ++r) {
    const FunctionEntry& row = theEfi[r];
    if (takes_no_matrix.contains(row.name->text)) continue;
    std::string general;
    for (const auto& [shape, words] : shapes) {
      const std::string name = row.name->text;
      const std::string cells = outcomes(name, shape, kNan) + " | " + outcomes(name, shape, kInf) +
                                " | " + outcomes(name, shape, -kInf);
      if (shape == Shape::general) general = cells;
      if (shape != Shape::general && cells == general && !every_kind) continue;
      table.push_back(std::string("| `") + row.name->text + "`" + words + " | " + cells + " |");
    }
  }
  return table;
}

TEST(NonFinite, TheDocumentSaysWhatHappens) {
  std::ifstream document(MATRIX_SOURCE_DIR "/docs/non-finite.md");
  ASSERT_TRUE(document);
  std::vector<std::string> documented;
  for (std::string line; std::getline(document, line);)
    if (line.starts_with("| `")) documented.push_back(line);
  if (kNamesFaults) {
    EXPECT_EQ(documented, actual_table(false));
    return;
  }
  std::set<std::string> actual;
  for (const std::string& line : actual_table(true)) actual.insert(without_fault_names(line));
  for (const std::string& line : documented)
    EXPECT_TRUE(actual.contains(without_fault_names(line))) << line;
}

// Extreme elements, one or all of them: a value, or a documented message.
TEST(NonFinite, ExtremeElementsEndInAValueOrADocumentedMessage) {
  const std::set<std::string> documented = {
      "value", "\"overflow\"", "\"floating point error\"", "\"singularity\"",
      "\"too many iterations\"", "\"singular matrix\"", "\"not converging\"",
      "\"no solution found\"", "\"non-positive definite matrix\"",
      // Of arguments that are none.
      "\"must be real\"", "\"must be vector\"", "\"must be square\"", "\"non-scalar value\""};
  const double extremes[] = {kNan, kInf, -kInf, 1e308, 1e200, 1e104, 1e-200, 5e-324, -0.0};
  for (const int n : {1, 2, 3, 6, 40})
    for (const char* kind : {"symmetric", "real", "complex", "triangular"})
      for (const double x : extremes)
        for (const int where : {0, 1, n * n / 2, n * n - 1, -1}) {
          if (n == 40 && where > 1) continue;
          CallCorpus corpus;
          aMatrix* const m = calls::make_matrix(corpus.host.store(), kind, n, n);
          for (double* part : {m->re, m->im})
            for (int k = 0; k < n * n && part != nullptr; ++k)
              part[k] = where == k ? x : where < 0 ? part[k] * x : part[k];
          for (const calls::Function& function : corpus.functions) {
            if (function.takes == kScalarKind || function.name == "matrix") continue;
            const Anyval* const value = function.call(corpus.arguments_of(function.name, m));
            EXPECT_TRUE(value == nullptr || documented.contains(outcome(value)))
                << function.name << " " << kind << " " << n << ", " << x << " at " << where << ": "
                << describe(value);
          }
        }
}

}  // namespace
