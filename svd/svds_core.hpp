// The singular values alone, as svds, rank, norm2 and cond2 use them.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// The singular values of M onto its diagonal, descending and nonnegative.
//   M        m x n, overwritten; what stands beside the diagonal is of no use. A missing real array
//            is a zero matrix and stays missing
//   returns  null, or "number of rows less than number of columns" (M is then untouched), "out of
//            memory", "overflow", "too many iterations": M is then of no use
//   cost     4 (m n^2 - n^3 / 3) + O(n^2) flops; O(n) doubles of work
//   method   that of svd_core without the factors. Kept: the first root of each step of a sweep is
//            not guarded against overflow, where svd_core guards both
const char* svds_core(aMatrix* m);

}  // namespace matrix_pack
