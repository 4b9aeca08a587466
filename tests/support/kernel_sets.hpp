// Runs a test body once for each kernel set that this processor and build have.
#pragma once

#include <gtest/gtest.h>

#include "pack/numeric/kernel_sets.hpp"

namespace matrix_pack::testing {

template <class Body>
void for_each_kernel_set(Body body) {
  const KernelSet usual = kernel_set();
  for (const KernelSet set : {KernelSet::baseline, KernelSet::v3, KernelSet::v4}) {
    if (!force_kernel_set(set)) continue;
    ASSERT_EQ(kernel_set(), set);
    SCOPED_TRACE(kernel_set_name(set));
    body();
  }
  force_kernel_set(usual);
}

}  // namespace matrix_pack::testing
