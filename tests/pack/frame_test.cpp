// The frames of the handlers: faults and exceptions become values, and the floating-point
// environment is as it was.
#include <gtest/gtest.h>

#include <cfenv>
#include <limits>
#include <new>
#include <vector>

#include "host/efiutils/fault_translation.hpp"
#include "pack/elements.hpp"
#include "pack/frame/fault_message.hpp"
#include "pack/frame/faults.hpp"
#include "pack/frame/fp_control.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/numeric/vector_kernels.hpp"
#include "pack/results.hpp"
#include "tests/support/fp_environment.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/test_host.hpp"

namespace matrix_pack {
namespace {

using test::expect_error;
using test::expect_number;
using test::expect_out_of_memory;
using test::TestHost;

volatile double zero = 0.0;
volatile double one = 1.0;
volatile double huge = 1e308;
volatile double infinite = std::numeric_limits<double>::infinity();

using Body = Anyval* (*)(EfiCallContext*);

Anyval* divide_by_zero(EfiCallContext* c) {
  return scalar_result(c, one / zero);
}
Anyval* invalid_operation(EfiCallContext* c) {
  return scalar_result(c, infinite * zero);
}
Anyval* overflow(EfiCallContext* c) {
  return scalar_result(c, huge * huge);
}
Anyval* own_overflow(EfiCallContext*) {
  throw SE_FPEOverflow_Exception();
}
Anyval* thrown_message(EfiCallContext*) {
  throw "a message";
}
Anyval* thrown_number(EfiCallContext*) {
  throw 42;
}
Anyval* thrown_bad_alloc(EfiCallContext*) {
  throw std::bad_alloc();
}
// Inexact, denormal and underflowing results are no faults.
Anyval* harmless(EfiCallContext* c) {
  const double tiny = std::numeric_limits<double>::min() / 3.0 * one;
  return scalar_result(c, tiny * tiny + one / 3.0 * 3.0);
}

struct FrameCase {
  Body body;
  const char* guarded_message;    // Null: a value.
  const char* contained_message;  // Null: a value.
};

const FrameCase kCases[] = {
    {divide_by_zero, "singularity", nullptr},
    {invalid_operation, "floating point error", nullptr},
    {overflow, "overflow", nullptr},
    {own_overflow, "overflow", "overflow"},
    {thrown_message, "a message", "a message"},
    {thrown_number, "Unknown error", "Unknown error"},
    {thrown_bad_alloc, "Unknown error", "memory exhausted"},
    {harmless, nullptr, nullptr},
};

class Frames : public ::testing::Test {
 protected:
  void SetUp() override { efi::install_fault_translation(); }
  void TearDown() override { std::fesetenv(FE_DFL_ENV); }
  TestHost host;
};

void expect_outcome(Anyval* value, const char* message) {
  if (message == nullptr) {
    EXPECT_EQ(value->kind, kScalarKind);
  } else if (value == sError_OutOfMemory) {
    EXPECT_STREQ(static_cast<aError*>(value)->message->text, message);
  } else {
    expect_error(value, message, 0, 0);
  }
}

TEST_F(Frames, TurnFaultsAndExceptionsIntoValuesAndKeepTheEnvironment) {
  // As most hosts have it; with flags raised; and rounding upwards.
  void (*const settings[])() = {[] { std::feclearexcept(FE_ALL_EXCEPT); },
                                [] { std::feraiseexcept(FE_INEXACT | FE_UNDERFLOW); },
                                [] { std::fesetround(FE_UPWARD); }};
  for (const auto& setting : settings) {
    for (const FrameCase& c : kCases) {
      SCOPED_TRACE(&c - kCases);
      setting();
      const auto before = test::fp_environment();
      expect_outcome(guarded(host.context(), [&] { return c.body(host.context()); }),
                     c.guarded_message);
      EXPECT_EQ(test::fp_environment(), before);
      expect_outcome(contained(host.context(), [&] { return c.body(host.context()); }),
                     c.contained_message);
      EXPECT_EQ(test::fp_environment(), before);
    }
  }
}

TEST_F(Frames, GuardedArithmeticRoundsToNearest) {
  std::fesetround(FE_UPWARD);
  Anyval* third = guarded(host.context(), [&] { return scalar_result(host.context(), one / 3.0); });
  std::fesetround(FE_TONEAREST);
  expect_number(third, 1.0 / 3.0);
}

// The fault comes from the middle of a vector loop that owns nothing, under a body that owns an
// array: the leak check of the sanitizer build sees whether it is freed.
TEST_F(Frames, AFaultInAKernelFreesTheCallersArrays) {
  testing::for_each_kernel_set([&] {
    Anyval* value = guarded(host.context(), [&] {
      const Doubles x = new_zeros(1001);
      const Doubles y = new_zeros(1001);
      for (int k = 0; k < 1001; ++k) x[static_cast<std::size_t>(k)] = k == 777 ? 1e300 : 1.0;
      vector_kernels().axpy(1001, 1e300, x.get(), y.get());
      return scalar_result(host.context(), y[0]);
    });
    expect_error(value, "overflow", 0, 0);
  });
}

TEST_F(Frames, ABodyMayEnterAGuardAgain) {
  Anyval* outer = guarded(host.context(), [&] {
    Anyval* inner = guarded(host.context(), [&] { return divide_by_zero(host.context()); });
    expect_error(inner, "singularity", 0, 0);
    return overflow(host.context());
  });
  expect_error(outer, "overflow", 0, 0);
}

TEST(FaultMessages, AreWordsForTheThreeFaultsAndNamesForTheRest) {
  const struct {
    std::uint32_t code;
    const char* message;
  } expected[] = {{0x80000001, "EXCEPTION_GUARD_PAGE"},
                  {0x80000002, "EXCEPTION_DATATYPE_MISALIGNMENT"},
                  {0x80000003, "EXCEPTION_BREAKPOINT"},
                  {0x80000004, "EXCEPTION_SINGLE_STEP"},
                  {0xC0000005, "EXCEPTION_ACCESS_VIOLATION"},
                  {0xC0000006, "EXCEPTION_IN_PAGE_ERROR"},
                  {0xC000001D, "EXCEPTION_ILLEGAL_INSTRUCTION"},
                  {0xC0000025, "EXCEPTION_NONCONTINUABLE_EXCEPTION"},
                  {0xC0000026, "EXCEPTION_INVALID_DISPOSITION"},
                  {0xC000008C, "EXCEPTION_ARRAY_BOUNDS_EXCEEDED"},
                  {0xC000008D, "EXCEPTION_FLT_DENORMAL_OPERAND"},
                  {0xC000008E, "singularity"},
                  {0xC000008F, "EXCEPTION_FLT_INEXACT_RESULT"},
                  {0xC0000090, "floating point error"},
                  {0xC0000091, "overflow"},
                  {0xC0000092, "EXCEPTION_FLT_STACK_CHECK"},
                  {0xC0000093, "EXCEPTION_FLT_UNDERFLOW"},
                  {0xC0000094, "EXCEPTION_INT_DIVIDE_BY_ZERO"},
                  {0xC0000095, "EXCEPTION_INT_OVERFLOW"},
                  {0xC0000096, "EXCEPTION_PRIV_INSTRUCTION"},
                  {0xC00000FD, "EXCEPTION_STACK_OVERFLOW"},
                  {0xC0000007, "EXCEPTION_UNKNOWN_EXCEPTION"},
                  {0, "EXCEPTION_UNKNOWN_EXCEPTION"}};
  for (const auto& [code, message] : expected) EXPECT_STREQ(fault_message(code), message);
}

TEST(FaultClasses, AreCaughtAsAnyOfTheirBases) {
  const auto caught = [](auto base) {
    try {
      throw SE_FPEOverflow_Exception();
    } catch (const decltype(base)& fault) {
      return fault.code;
    }
  };
  EXPECT_EQ(caught(SE_Exception(0)), kFaultOverflow);
  EXPECT_EQ(caught(SE_FPE_Exception(0)), kFaultOverflow);
  const SE_FPEOverflow_Exception fault;
  EXPECT_TRUE(fault.is_overflow());
  EXPECT_FALSE(fault.is_division_by_zero() || fault.is_invalid());
  EXPECT_EQ(fault.word, 0u);

  [[maybe_unused]] volatile double product = huge * huge;
  EXPECT_NE(SE_FPE_Exception(kFaultOverflow).status, 0u);
  EXPECT_EQ(_clearfp(), 0u);
}

TEST(Elements, AbsentArraysReadAsZeroAndAppearWithTheFirstNonzeroValue) {
  TestHost host;
  aMatrix* lean = host.lean(2, 3);
  EXPECT_EQ(elem_re(lean, 1, 2), 0.0);
  EXPECT_EQ(elem_im(lean, 1, 2), 0.0);
  set_elem(lean, 1, 2, 0.0, std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(lean->re, nullptr);
  EXPECT_EQ(lean->im, nullptr);
  store_if_present(lean->re, 2, 1, 2, 5.0);
  EXPECT_EQ(lean->re, nullptr);

  set_im(lean, 1, 2, 4.0);
  EXPECT_EQ(lean->re, nullptr);
  EXPECT_EQ(test::im_parts(lean), (std::vector<double>{0, 0, 0, 0, 0, 4}));
  set_im(lean, 1, 2, 0.0);
  EXPECT_EQ(elem_im(lean, 1, 2), 0.0);
  ASSERT_NE(lean->im, nullptr);
}

TEST(Elements, HugeMagnitudesAreFoundFromTheirBoundsOn) {
  TestHost host;
  const double below307 = std::nextafter(1e307, 0.0);
  const double below104 = std::nextafter(1e104, 0.0);
  EXPECT_FALSE(has_huge_element(host.matrix({{1, -below307}})));
  EXPECT_TRUE(has_huge_element(host.matrix({{1, -1e307}})));
  EXPECT_TRUE(has_huge_element(host.imaginary({{1}, {1e307}})));
  EXPECT_FALSE(has_huge_offdiag(host.matrix({{1e200, below104}, {0, 1}})));
  EXPECT_TRUE(has_huge_offdiag(host.matrix({{1, 0}, {-1e104, 1}})));
  EXPECT_TRUE(has_huge_offdiag(host.imaginary({{1, 1e104}, {0, 1}})));
}

TEST(Memory, ASizeThatCannotBeRepresentedIsExhaustedMemory) {
  EXPECT_EQ(new_part(65536, 8192), nullptr);  // 2^32 bytes: one more than a matrix can state.
  EXPECT_EQ(new_part(0x7FFFFFFF, 0x7FFFFFFF), nullptr);
  EXPECT_EQ(new_part(-2, -2), nullptr);
  EXPECT_EQ(new_doubles(std::numeric_limits<std::int64_t>::max() / 4), nullptr);
  EXPECT_NE(new_part(0, 5), nullptr);
}

}  // namespace
}  // namespace matrix_pack
