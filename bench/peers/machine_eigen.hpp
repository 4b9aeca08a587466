// What one core of this machine can do, measured by code compiled for it.
#pragma once

#include <cstddef>

namespace bench::eigen {

// Multiplications and additions a second that are not fused.
double peak_operations();

// Bytes a second, read and written alike, of an array of so many.
double bandwidth(std::size_t bytes);

}  // namespace bench::eigen
