// Which arithmetic faults the guarded functions can meet, and the word for each. A fault that is
// missing here cannot happen:
//
//   rows, cols   compute nothing
//   tr, norme, submatrix   divide nothing. The bounds of submatrix are compared before they are
//                subtracted, so that nothing overflows; a NaN fails the first comparison
//   normi        divides only by the larger of two parts, which is not zero
//   inv, conde, condi of real matrices   divide by pivots, and a pivot of zero is "singular matrix"
//   eigenvals    divides only by what a test has found not to be zero, or by sums of magnitudes of
//                which one is not
#include <cstring>
#include <set>

#include "pack/frame/fault_mode.hpp"
#include "tests/support/call_corpus.hpp"

namespace {

using namespace test;

constexpr double kDenormal = std::numeric_limits<double>::denorm_min();

constexpr const char* kInvalid = "floating point error";
constexpr const char* kOverflow = "overflow";
constexpr const char* kZeroDivide = "singularity";
constexpr const char* kSingular = "singular matrix";

struct Case {
  const char* function;
  const char* word;
  ComplexRows elements;
  ComplexRows second = {};  // Of a generalized problem.
  bool is_complex = false;
};

const Case kCases[] = {
    {"tr", kInvalid, {{kInf, 0}, {0, -kInf}}},
    {"tr", kOverflow, {{1e308, 0}, {0, 1e308}}},
    {"norme", kOverflow, {{1e200}}},
    {"normi", kInvalid, {{kNan}}},
    {"normi", kOverflow, {{1e308, 1e308}, {0, 1}}},
    // Of several rows that fail, the first one counts.
    {"normi", kInvalid, {{kNan, 1, 1}, {1, 1e308, 1e308}, {1, 1, 1}}},
    {"cond2", kInvalid, {{1e-200, 1e-200}, {0, 1e-308}}},
    {"cond2", kOverflow, {{1e308}}},
    {"cond2", kZeroDivide, {{0, 1e-200}, {0, kDenormal}}},
    {"conde", kInvalid, {{kInf}}},
    {"conde", kOverflow, {{kDenormal}}},
    {"condi", kInvalid, {{kInf}}},
    {"condi", kOverflow, {{kDenormal}}},
    {"eigenvals", kInvalid, {{{kNan, 1}}}, {}, true},
    {"eigenvals", kOverflow, {{2e154, 1e308}, {1e308, 1e154}}},
    {"eigenvecs", kInvalid, {{{kNan, 1}, 1}, {1, 1}}, {}, true},
    {"eigenvecs", kOverflow, {{{1.7e308, 1.7e308}}}, {}, true},
    {"eigenvecs", kZeroDivide, {{0, 1e-310}, {0, 0}}},
    {"genvals", kInvalid, {{1e-200, 1e-200}, {0, 1e-308}}, {{1, 0}, {0, 1}}},
    {"genvals", kOverflow, {{-1}}, {{1e-310}}},
    {"genvals", kZeroDivide, {{0}}, {{0}}},
    {"genvecs", kInvalid, {{1e-200, 1e-200}, {0, 1e-308}}, {{1, 0}, {0, 1}}},
    {"genvecs", kOverflow, {{1.7e308, -1e200}, {-1e200, 3}}, {{1, 0}, {0, 1}}},
    {"genvecs", kZeroDivide, {{0}}, {{0}}},
    {"svd", kInvalid, {{1e-200, 1e-200}, {0, 1e-308}}},
    {"svd", kOverflow, {{1e308}}},
    {"svd", kZeroDivide, {{0, 1e-200}, {0, kDenormal}}},
    {"inv any", kInvalid, {{kInf}}},
    {"inv any", kOverflow, {{kDenormal}}},
    // The row is not zero, but the moduli of its elements are.
    {"inv any", kZeroDivide, {{{1e-170, 1e-170}}}, {}, true},
    // Of several rows that fail, the first one counts.
    {"inv any", kSingular, {{0, 0}, {kNan, 1}}},
    {"inv any", kInvalid, {{kNan, 1}, {0, 0}}},
    {"inv any", kOverflow, {{kDenormal, 0}, {kNan, 1}}},
    {"inv any", kSingular, {{0, 0}, {{1e200, 1e200}, 1}}, {}, true},
    {"inv any", kOverflow, {{{1e200, 1e200}, 1}, {0, 0}}, {}, true},
    {"condi", kSingular, {{1, 0, 0}, {0, 0, 0}, {{kNan, 1}, 1, 0}}, {}, true},
};

aMatrix* real_matrix(TestHost& host, ComplexRows rows) {
  aMatrix* const m = host.complex_matrix(rows);
  ::operator delete(m->im);
  m->im = nullptr;
  return m;
}

TEST(FaultWords, OfEveryFaultThatAGuardedFunctionCanMeet) {
  CallCorpus corpus;
  TestHost& host = corpus.host;
  for (const Case& c : kCases) {
    SCOPED_TRACE(std::string(c.function) + ": " + c.word);
    aMatrix* const a =
        c.is_complex ? host.complex_matrix(c.elements) : real_matrix(host, c.elements);
    calls::Arguments arguments = corpus.arguments_of(c.function, a);
    if (c.second.size() != 0) arguments[1] = real_matrix(host, c.second);
    expect_fault(corpus.function(c.function).call(arguments), c.word);
  }
  // The real parts are added up first. (The flags tell the more severe fault.)
  expect_fault(corpus.function("tr").call(
                   {host.complex_matrix({{{1.7e308, kInf}, 0}, {0, {1.7e308, -kInf}}})}),
               matrix_pack::faults_trap() ? kOverflow : kInvalid);
  // A NaN as a bound, and a NaN that signals: squaring a quiet one is no fault.
  calls::Arguments bounds = corpus.arguments_of("submatrix", host.matrix({{1, 2}, {3, 4}}));
  bounds[2] = host.scalar(kNan);
  expect_fault(corpus.function("submatrix").call(bounds), kInvalid);
  aMatrix* const signalling = host.matrix({{1}});
  const std::uint64_t pattern = 0x7FF0000000000001;
  std::memcpy(signalling->re, &pattern, sizeof pattern);
  expect_fault(corpus.function("norme").call({signalling}), kInvalid);
}

}  // namespace
