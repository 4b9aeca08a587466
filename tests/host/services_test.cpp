// The host library's services as packs see them.
#include <cmath>

#include "pack/frame/faults.hpp"
#include "tests/support/test_host.hpp"

using namespace test;
using Services = InHost;

namespace {

TEST_F(Services, RecordsLieBelowFourGigabytesAndHoldNestedValues) {
  aMatrix* const inner = host.matrix({{1, 2}});
  aMatrix* const outer = host.nested(1, 2, {inner, host.string("text")});
  EXPECT_LT(reinterpret_cast<std::uintptr_t>(inner), std::uint64_t{1} << 32);
  EXPECT_EQ(efi::nested_value(outer->re[0]), inner);
  EXPECT_TRUE(contains_ptrs(outer));
  outer->flags = 0;
  EXPECT_TRUE(contains_ptrs(outer)) << "the pattern alone is enough";
  EXPECT_FALSE(contains_ptrs(host.matrix({{std::nan(""), -std::nan("")}})));
}

TEST_F(Services, JoinedValuesRememberTheirParts) {
  aMatrix* const p = host.matrix({{1, 0}, {0, 1}});
  aMatrix* const q = host.complex_matrix({{{2, 3}}, {{4, 5}}});
  aMatrix* out = nullptr;
  ASSERT_TRUE(pack_two_r(c, p, q, &out));
  expect_complex_matrix(out, {{1, 0, {2, 3}}, {0, 1, {4, 5}}});
  EXPECT_EQ(host.parts(out), (std::vector<aMatrix*>{p, q}));
  EXPECT_TRUE(host.parts(p).empty());
  aMatrix* const row = host.lean(1, 2);
  ASSERT_TRUE(pack_two_rr(c, p, row, &out));
  expect_matrix(out, {{1, 0}, {0, 1}, {0, 0}});
  EXPECT_FALSE(pack_two_r(c, p, row, &out)) << "row counts differ";
  EXPECT_FALSE(pack_two_rr(c, p, q, &out)) << "column counts differ";
}

TEST_F(Services, ColumnsAreScaledToLengthOneAtAnyMagnitude) {
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

TEST_F(Services, SmallOnes) {
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
  EXPECT_EQ(matrix_copy_add_imag(c, host.matrix({{1}}), &copy), nullptr);
  expect_complex_matrix(copy, {{1}});
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

// The guard's tests show the codes.
TEST(FaultTranslation, LeavesTheX87ControlWordAsItIs) {
#if !MATRIX_HAS_MXCSR || defined(__clang__)
  GTEST_SKIP() << "needs an unmasked exception, and a compiler that unwinds from it";
#else
  TestHost host;
  std::uint16_t before, after;
  asm volatile("fnstcw %0" : "=m"(before));
  const auto changed = static_cast<std::uint16_t>(before & ~0x0300);  // 24-bit mantissas.
  asm volatile("fldcw %0" : : "m"(changed));
  const std::uint32_t control = _mm_getcsr();
  volatile double x = 1, y = 0;
  std::uint32_t code = 0;
  _mm_setcsr(matrix_pack::kTrapping);
  try {
    x = x / y;
  } catch (const SE_FPE_Exception& fault) {
    code = fault.code;
  }
  _mm_setcsr(control);
  EXPECT_EQ(code, kFaultDivideByZero);
  asm volatile("fnstcw %0" : "=m"(after));
  asm volatile("fldcw %0" : : "m"(before));
  EXPECT_EQ(after, changed);
#endif
}

}  // namespace
