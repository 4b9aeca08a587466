// Tests that run once in each kernel set. One that this processor or build lacks is skipped.
#pragma once

#include <gtest/gtest.h>

#include "pack/numeric/kernel_sets.hpp"

namespace test {

class InEveryKernelSet : public ::testing::TestWithParam<matrix_pack::KernelSet> {
 protected:
  void SetUp() override {
    if (!matrix_pack::force_kernel_set(GetParam()))
      GTEST_SKIP() << "no kernel set " << kernel_set_name(GetParam()) << " here";
  }
  void TearDown() override { matrix_pack::force_kernel_set(usual_); }

 private:
  const matrix_pack::KernelSet usual_ = matrix_pack::kernel_set();
};

}  // namespace test

// Behind the tests TEST_P(suite, ...) of a suite of this kind.
#define IN_EVERY_KERNEL_SET(suite)                                                    \
  INSTANTIATE_TEST_SUITE_P(                                                           \
      , suite,                                                                        \
      ::testing::Values(matrix_pack::KernelSet::baseline, matrix_pack::KernelSet::v3, \
                        matrix_pack::KernelSet::v4),                                  \
      [](const auto& test) { return kernel_set_name(test.param); })
