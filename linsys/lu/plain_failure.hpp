// Factors and inverses by the plain algorithm, for where the fast one has failed: which of several
// failures comes first is told as by elimination row by row.
//
//   m        the argument; `lu`, its working copy with the part arrays that are needed, is filled
//            from it anew
//   complex  what cludecomp did has failed, else what ludecomp did; the same for pivots (an array)
//   returns  null, "singular matrix" or "out of memory"; faults and SE_FPEOverflow_Exception come
//            as they are due
//   cost     that of the fast ones in flops, at one at a time
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

const char* factor_plainly(const aMatrix* m, aMatrix* lu, bool complex, double* pivots,
                           bool relative_test);

// The inverse to the n x n arrays re and, for a complex one, im.
const char* invert_plainly(const aMatrix* m, aMatrix* lu, bool complex, double* pivots,
                           bool relative_test, double* re, double* im);

}  // namespace matrix_pack
