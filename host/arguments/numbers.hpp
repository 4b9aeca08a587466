// Numbers that functions are likely to break at.
#pragma once

#include <cfloat>
#include <cmath>

namespace arguments {

// Sizes, indices and tolerances at which documented tests change their answer, and the edges of the
// number format.
inline constexpr double kTroublemakers[] = {
    0.0,     -0.0,         1.0,          2.0,           3.0,          -1.0,      0.1,
    0.5,     0.9,          1.5,          2.5,           2.9999999999, 1e18,      1e19,
    1e307,   9.9e306,      -1e307,       1e104,         2e104,        1e154,     1e-154,
    1e200,   1e-200,       1e300,        -1e300,        1e-300,       1e-30,     1e-20,
    1e-15,   1e-12,        1e-10,        2e-10,         1e-9,         100000.0,  100001.0,
    1e7,     1e5,          8000001.0,    2147483647.0,  2147483648.0, DBL_MAX,   -DBL_MAX,
    DBL_MIN, DBL_TRUE_MIN, DBL_EPSILON,  -2147483648.0, -2147483649., 1e10,      NAN,
    0x1p-53, 4294967296.0, 4294967297.0, 0x1p53,        HUGE_VAL,     -HUGE_VAL, 1 + 0x1p-52};

}  // namespace arguments
