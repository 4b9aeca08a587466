// Arrays of doubles: the part arrays of results and the work arrays of a call.
//
// Both come from ::operator new and are freed by ::operator delete on every way out, until
// new_matrix hands a part array to the host. An array that cannot be had is null, whether memory is
// exhausted or its byte size does not fit the 32 bits of a matrix record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include "pack/host_interface.hpp"

namespace matrix_pack {

// Frees an array that came from ::operator new.
struct OperatorDelete {
  // Frees `p`.
  void operator()(double* p) const { ::operator delete(p); }
};
// An array of doubles that frees itself, or null.
using Doubles = std::unique_ptr<double[], OperatorDelete>;

// `count` uninitialised doubles. An array of no doubles is not null.
Doubles new_doubles(std::int64_t count) noexcept;
// The same, all 0.
Doubles new_zeros(std::int64_t count) noexcept;

// A part array of a rows x cols matrix; null also when its byte size needs more than 32 bits.
Doubles new_part(std::int64_t rows, std::int64_t cols) noexcept;
// The same, all 0.
Doubles new_zero_part(std::int64_t rows, std::int64_t cols) noexcept;

// A new matrix that adopts the part arrays (either may be null). Null when the host has no memory;
// the arrays are then freed.
aMatrix* new_matrix(EfiCallContext* context, int rows, int cols, Doubles re, Doubles im = nullptr);

// aMatrix::mk for a column of n elements. `bytes` is 8 n.
inline aMatrix* mk_column(IqlAllocator* allocator, int n, double* re, double* im, unsigned bytes) {
  return aMatrix::mk(allocator, n, 1, re, im, bytes);
}

}  // namespace matrix_pack
