// A host for tests: makes a call context and values, reads results, takes joined values apart, and
// notes what a pack does against the rules.
//
//   TestHost host;
//   Anyval* a = host.matrix({{1, 2}, {3, 4}});
//   expect_error(matrix_pack::tr(host.context(), host.scalar(1)), "must be array", 0, 1);
#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "pack/frame/fault_mode.hpp"
#include "pack/host_interface.hpp"
#include "tests/calls/host.hpp"
#include "tests/calls/outcome.hpp"
#include "tests/support/allocation_faults.hpp"

namespace test {

using calls::describe;
using StdComplex = std::complex<double>;

inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();

using Rows = std::initializer_list<std::initializer_list<double>>;
using ComplexRows = std::initializer_list<std::initializer_list<StdComplex>>;

// The place of a call, as a default argument. (std::source_location, which not every compiler has.)
struct Where {
  static Where here(const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    return {file, line};
  }
  const char* file;
  int line;
};

class TestHost {
 public:
  TestHost();
  // A test fails when a pack has broken the rules of the evaluator bracket by then.
  ~TestHost();
  TestHost(const TestHost&) = delete;
  TestHost& operator=(const TestHost&) = delete;

  calls::Host& base() { return base_; }
  EfiCallContext* context() { return &base_.context; }
  efi::Store& store() { return base_.store; }
  efi::Evaluator& evaluator() { return base_.evaluator; }

  // --- Values. The real array is present in all that do not say otherwise. ---

  aMatrix* matrix(Rows rows);
  aMatrix* matrix(int rows, int cols, const std::vector<double>& column_major);
  aMatrix* column(const std::vector<double>& elements);
  aMatrix* complex_matrix(ComplexRows rows);
  aMatrix* complex_matrix(int rows, int cols, const std::vector<StdComplex>& column_major);
  // Purely imaginary: without a real array.
  aMatrix* imaginary(Rows rows);
  // All zero: without part arrays.
  aMatrix* lean(int rows, int cols);
  // A matrix whose elements are values.
  aMatrix* nested(int rows, int cols, const std::vector<Anyval*>& column_major);
  aComplex* scalar(double re, double im = 0.0);
  aString* string(const char* text);
  // A function value; `body` is called with the two indices that `matrix` passes.
  Anyval* function(calls::Host::Body body) { return base_.function(std::move(body)); }

  // The matrices of which a joined value was made; empty for any other value.
  std::vector<aMatrix*> parts(const Anyval* joined);

  // Values that exist now.
  std::size_t live_values() const { return base_.store.size(); }

 private:
  aMatrix* make(int rows, int cols, const std::vector<double>* re, const std::vector<double>* im);

  calls::Host base_;
};

// A test in a host of its own.
class InHost : public ::testing::Test {
 protected:
  TestHost host;
  EfiCallContext* const c = host.context();
};

// --- Reading results. Each fails the test, and gives an empty or NaN result, on another kind. ---

aMatrix* as_result_matrix(Anyval* value, Where where = Where::here());
// The number of a scalar.
StdComplex number(Anyval* value, Where where = Where::here());
double real_number(Anyval* value, Where where = Where::here());
// Elements of a matrix; an absent array reads as zeros.
double re(const aMatrix* m, int i, int j);
double im(const aMatrix* m, int i, int j);
// All parts, column-major.
std::vector<double> re_parts(const aMatrix* m);
std::vector<double> im_parts(const aMatrix* m);
std::vector<StdComplex> elements(const aMatrix* m);

// Column-major elements from rows.
std::vector<double> column_major(Rows rows);

// Expects a real matrix with exactly these elements (also -0.0 == 0.0), or this real number.
void expect_matrix(Anyval* value, Rows rows, Where where = Where::here());
void expect_complex_matrix(Anyval* value, ComplexRows rows, Where where = Where::here());
void expect_number(Anyval* value, double re, double im = 0.0, Where where = Where::here());
// Expects an error value. `carried` is the value that it carries.
void expect_error(Anyval* value, const std::string& message, int mark, int arg,
                  const Anyval* carried = nullptr, Where where = Where::here());
// Expects the error value of an arithmetic fault under the guard; `word` is the message for the
// first one. Where faults are read from the status flags, a later one may have taken precedence.
inline void expect_fault(Anyval* value, std::string word, Where where = Where::here()) {
  for (const char* preferred : {"singularity", "floating point error", "overflow"}) {
    if (matrix_pack::faults_trap() || preferred == word) break;
    if (value != nullptr && value->kind == kErrorKind &&
        static_cast<aError*>(value)->message->text == std::string_view(preferred))
      word = preferred;
  }
  expect_error(value, word, 0, 0, nullptr, where);
}
// Expects the host's ready-made value for exhausted memory.
void expect_out_of_memory(Anyval* value, Where where = Where::here());

}  // namespace test
