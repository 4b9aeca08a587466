// Tests that run once in each kernel set. One that this processor or build lacks is skipped.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <numeric>
#include <vector>

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

// Orders of matrices for comparisons with plain loops: the usual ones, or, with MATRIX_EVERY_ORDER
// in the environment, all from 1 to 300.
inline std::vector<int> orders(std::vector<int> usual) {
  if (std::getenv("MATRIX_EVERY_ORDER") == nullptr) return usual;
  usual.resize(300);
  std::iota(usual.begin(), usual.end(), 1);
  return usual;
}

}  // namespace test

// Behind the tests TEST_P(suite, ...) of a suite of this kind.
#define IN_EVERY_KERNEL_SET(suite)                                                    \
  INSTANTIATE_TEST_SUITE_P(                                                           \
      , suite,                                                                        \
      ::testing::Values(matrix_pack::KernelSet::baseline, matrix_pack::KernelSet::v3, \
                        matrix_pack::KernelSet::v4),                                  \
      [](const auto& test) { return kernel_set_name(test.param); })
