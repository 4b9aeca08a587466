// The host library's services as packs see them.
#include <cmath>
#include <limits>

#include "pack/frame/faults.hpp"
#include "tests/support/test_host.hpp"

using namespace test;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(Services, RecordsLieBelowFourGigabytesAndHoldNestedValues) {
  TestHost host;
  aMatrix* const inner = host.matrix({{1, 2}});
  aMatrix* const outer = host.nested(1, 2, {inner, host.string("text")});
  EXPECT_LT(reinterpret_cast<std::uintptr_t>(inner), std::uint64_t{1} << 32);
  EXPECT_EQ(efi::nested_value(outer->re[0]), inner);
  EXPECT_TRUE(contains_ptrs(outer));
  outer->flags = 0;
  EXPECT_TRUE(contains_ptrs(outer)) << "the pattern alone is enough";
  EXPECT_FALSE(contains_ptrs(host.matrix({{std::nan(""), -std::nan("")}})));
}

TEST(Services, JoinedValuesRememberTheirParts) {
  TestHost host;
  aMatrix* const p = host.matrix({{1, 0}, {0, 1}});
  aMatrix* const q = host.complex_matrix({{{2, 3}}, {{4, 5}}});
  aMatrix* out = nullptr;
  ASSERT_TRUE(pack_two_r(host.context(), p, q, &out));
  expect_complex_matrix(out, {{1, 0, {2, 3}}, {0, 1, {4, 5}}});
  EXPECT_EQ(host.parts(out), (std::vector<aMatrix*>{p, q}));
  EXPECT_TRUE(host.parts(p).empty());

  aMatrix* const row = host.lean(1, 2);
  ASSERT_TRUE(pack_two_rr(host.context(), p, row, &out));
  expect_matrix(out, {{1, 0}, {0, 1}, {0, 0}});
  ASSERT_TRUE(pack_three_c(host.context(), p, p, p, &out));
  expect_matrix(out, {{1, 0, 1, 0, 1, 0}, {0, 1, 0, 1, 0, 1}});

  EXPECT_FALSE(pack_two_r(host.context(), p, row, &out)) << "row counts differ";
  EXPECT_FALSE(pack_two_rr(host.context(), p, q, &out)) << "column counts differ";
}

TEST(Services, ColumnsAreScaledToLengthOneAtAnyMagnitude) {
  TestHost host;
  aMatrix* const m = host.matrix({{3e300, 3e-310, 0, 3}, {4e300, 4e-310, 0, 0}});
  renormalize_matrix_cols(m);
  EXPECT_DOUBLE_EQ(re(m, 0, 0), 0.6);
  EXPECT_DOUBLE_EQ(re(m, 1, 0), 0.8);
  EXPECT_NEAR(re(m, 0, 1), 0.6, 1e-12);  // The element is subnormal: it has fewer digits.
  EXPECT_EQ(re(m, 0, 2), 0.0);
  EXPECT_EQ(re(m, 0, 3), 1.0);
  aMatrix* const z = host.complex_matrix({{{3, 4}}});
  renormalize_matrix_cols(z);
  EXPECT_DOUBLE_EQ(im(z, 0, 0), 0.8);
}

TEST(Services, SmallOnes) {
  TestHost host;
  EXPECT_TRUE(symmetry(host.matrix({{1, 2}, {2, 1}})));
  EXPECT_FALSE(symmetry(host.complex_matrix({{1, {2, 1}}, {{2, -1}, 1}})));
  EXPECT_FALSE(symmetry(host.matrix({{1, 2}})));
  EXPECT_TRUE(symmetry(host.lean(2, 2)));

  aMatrix* const m = host.complex_matrix({{{1, 2}, {3, 4}}, {{5, 6}, {7, 8}}});
  zero_col(1, 1, m);
  expect_complex_matrix(m, {{{1, 2}, {3, 4}}, {{5, 6}, 0}});
  double column[2];
  aVector vector = {2, column};
  EXPECT_EQ(MtoVcol(m, 0, &vector), nullptr);
  EXPECT_EQ(column[1], 5.0);
  EXPECT_STREQ(MtoVcol(m, 2, &vector), "invalid index");
  EXPECT_TRUE(nonint(0.5) && nonint(kInf) && nonint(std::nan("")));
  EXPECT_FALSE(nonint(-3.0) || nonint(1e300));

  aMatrix* copy = nullptr;
  EXPECT_EQ(matrix_copy_add_imag(host.context(), host.matrix({{1}}), &copy), nullptr);
  expect_complex_matrix(copy, {{1}});
}

TEST(Services, ReportExhaustedMemory) {
  TestHost host;
  aMatrix* const m = host.complex_matrix({{1, {2, 1}}});
  int failures = 0;
  aMatrix* copy = nullptr;
  with_failing_allocations([&] { return matrix_copy(host.context(), m, &copy); },
                           [&](const char* message, int) {
                             EXPECT_STREQ(message, "out of memory");
                             ++failures;
                           });
  EXPECT_EQ(failures, 3) << "two arrays and the record";
  with_failing_allocations([&] { return mkError(host.context(), "text", 1); },
                           [](Anyval* value, int) { expect_out_of_memory(value); });
  with_failing_allocations([&] { return pack_three_c(host.context(), m, m, m, &copy); },
                           [](bool joined, int) { EXPECT_FALSE(joined); });
}

TEST(Store, ReclaimsWhatNoRootReaches) {
  TestHost host;
  aMatrix* const inner = host.matrix({{1}});
  aMatrix* const outer = host.nested(1, 1, {host.nested(1, 1, {inner})});
  host.matrix({{2}});
  Anyval* const error = mkError(host.context(), "kept with its text", 0);
  aMatrix* joined = nullptr;
  ASSERT_TRUE(pack_two_r(host.context(), inner, inner, &joined));
  Anyval* const roots[] = {outer, error, joined};
  host.store().collect(roots);
  EXPECT_EQ(host.live_values(), 7u);
  expect_matrix(inner, {{1}});
  expect_error(error, "kept with its text", 0, 0);
  EXPECT_EQ(host.parts(joined).size(), 2u);

  const std::size_t mark = host.store().size();
  host.scalar(1);
  host.store().collect({}, mark);
  EXPECT_EQ(host.live_values(), 7u) << "older values are not looked at";
}

TEST(Evaluator, NotesAnUnbalancedBracket) {
  efi::Evaluator evaluator;
  Anyval* word = nullptr;
  evaluator.push_root(&word);
  evaluator.push_local(&word);
  EXPECT_EQ(evaluator.depth(), 1u);
  EXPECT_EQ(evaluator.words().size(), 2u);
  evaluator.pop_frame();
  EXPECT_TRUE(evaluator.words().empty() && evaluator.complaints.empty());
  evaluator.pop_frame();
  evaluator.push_local(&word);
  EXPECT_EQ(evaluator.complaints.size(), 2u);
}

TEST(FaultTranslation, GivesTheCodeAndTheInterruptedControlWord) {
#if !MATRIX_HAS_MXCSR || defined(__clang__)
  GTEST_SKIP() << "needs an unmasked exception, and a compiler that unwinds from it";
#else
  TestHost host;
  std::uint16_t before, after;
  asm volatile("fnstcw %0" : "=m"(before));
  const auto changed = static_cast<std::uint16_t>(before & ~0x0300);  // 24-bit mantissas.
  asm volatile("fldcw %0" : : "m"(changed));
  const std::uint32_t control = _mm_getcsr();
  struct Case {
    double x, y;
    std::uint32_t code;
  };
  for (const Case& c : {Case{1, 0, kFaultDivideByZero}, Case{0, 0, kFaultInvalid},
                        Case{1e300, 1e-300, kFaultOverflow}}) {
    volatile double x = c.x, y = c.y;
    std::uint32_t code = 0;
    _mm_setcsr(matrix_pack::kTrapping);
    try {
      x = x / y;
    } catch (const SE_FPE_Exception& fault) {
      code = fault.code;
    }
    _mm_setcsr(control);
    EXPECT_EQ(code, c.code);
  }
  asm volatile("fnstcw %0" : "=m"(after));
  asm volatile("fldcw %0" : : "m"(before));
  EXPECT_EQ(after, changed);
#endif
}

}  // namespace
