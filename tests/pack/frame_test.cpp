// The frames of the handlers: faults and exceptions become values, and the floating-point
// environment is as it was.
#include <cfenv>
#include <limits>
#include <new>
#include <vector>

#include "host/efiutils/fault_translation.hpp"
#include "pack/frame/fault_message.hpp"
#include "pack/frame/fault_mode.hpp"
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

using GuardedBody = Anyval* (*)(EfiCallContext*);

Anyval* divide_by_zero(EfiCallContext* c) {
  return scalar_result(c, one / zero);
}
Anyval* overflow(EfiCallContext* c) {
  return scalar_result(c, huge * huge);
}

struct FrameCase {
  GuardedBody body;
  const char* guarded_message;    // Null: a value.
  const char* contained_message;  // Null: a value.
};

const FrameCase kCases[] = {
    {divide_by_zero, "singularity", nullptr},
    {overflow, "overflow", nullptr},
    {[](auto* c) { return scalar_result(c, infinite * zero); }, "floating point error", nullptr},
    {[](auto*) -> Anyval* { throw SE_FPEOverflow_Exception(); }, "overflow", "overflow"},
    {[](auto*) -> Anyval* { throw "a message"; }, "a message", "a message"},
    {[](auto*) -> Anyval* { throw 42; }, "Unknown error", "Unknown error"},
    {[](auto*) -> Anyval* { throw std::bad_alloc(); }, "Unknown error", "memory exhausted"},
    // Inexact, denormal and underflowing results are no faults.
    {[](auto* c) {
       const double tiny = std::numeric_limits<double>::min() / 3.0 * one;
       return scalar_result(c, tiny * tiny + one / 3.0 * 3.0);
     },
     nullptr, nullptr},
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

#if MATRIX_HAS_MXCSR
// Slots of the x87 stack that stay taken run out, and what is computed there goes wrong.
TEST_F(Frames, AFaultLeavesNoSlotOfTheX87StackTaken) {
  if (!faults_trap()) GTEST_SKIP() << "the body is not left";
  for (int k = 0; k < 1000; ++k)
    guarded(host.context(), [&] {
      asm volatile("fld1");
      return divide_by_zero(host.context());
    });
  std::uint32_t environment[7];
  asm volatile("fnstenv %0\n\tfldenv %0" : "+m"(environment));
  EXPECT_EQ(environment[2] & 0xFFFF, 0xFFFFu) << "the tag word: all are free";
}
#endif

using FramesOfKernels = test::InEveryKernelSet;

// The fault comes from the middle of a vector loop that owns nothing, under a body that owns an
// array: the leak check of the sanitizer build sees whether it is freed.
TEST_P(FramesOfKernels, AFaultInAKernelFreesTheCallersArrays) {
  TestHost host;
  Anyval* value = guarded(host.context(), [&] {
    const Doubles x = new_zeros(1001);
    const Doubles y = new_zeros(1001);
    for (int k = 0; k < 1001; ++k) x[static_cast<std::size_t>(k)] = k == 777 ? 1e300 : 1.0;
    vector_kernels().axpy(1001, 1e300, x.get(), y.get());
    return scalar_result(host.context(), y[0]);
  });
  expect_error(value, "overflow", 0, 0);
}

IN_EVERY_KERNEL_SET(FramesOfKernels);

TEST_F(Frames, ABodyMayEnterAGuardAgain) {
  Anyval* outer = guarded(host.context(), [&] {
    Anyval* inner = guarded(host.context(), [&] { return divide_by_zero(host.context()); });
    expect_error(inner, "singularity", 0, 0);
    return overflow(host.context());
  });
  expect_error(outer, "overflow", 0, 0);
}

TEST(FaultMessages, AreWordsForTheThreeFaultsAndNamesForTheRest) {
  EXPECT_STREQ(fault_message(kFaultDivideByZero), "singularity");
  EXPECT_STREQ(fault_message(kFaultInvalid), "floating point error");
  EXPECT_STREQ(fault_message(kFaultOverflow), "overflow");
  EXPECT_STREQ(fault_message(0x80000001), "EXCEPTION_GUARD_PAGE");
  EXPECT_STREQ(fault_message(0xC00000FD), "EXCEPTION_STACK_OVERFLOW");
  for (const std::uint32_t code : {0u, 0xC0000007u})
    EXPECT_STREQ(fault_message(code), "EXCEPTION_UNKNOWN_EXCEPTION");
}

TEST(FaultClasses, AreCaughtAsAnyOfTheirBases) {
  EXPECT_THROW(throw SE_FPEOverflow_Exception(), SE_FPE_Exception);
  try {
    throw SE_FPEOverflow_Exception();
  } catch (const SE_Exception& fault) {
    EXPECT_EQ(fault.code, kFaultOverflow);
  }
  const SE_FPEOverflow_Exception fault;
  EXPECT_TRUE(fault.is_overflow());
  EXPECT_FALSE(fault.is_division_by_zero() || fault.is_invalid());
  EXPECT_EQ(fault.word, 0u);

  [[maybe_unused]] volatile double product = huge * huge;
  EXPECT_NE(SE_FPE_Exception(kFaultOverflow).status, 0u);
  EXPECT_EQ(_clearfp(), 0u);
}

}  // namespace
}  // namespace matrix_pack
