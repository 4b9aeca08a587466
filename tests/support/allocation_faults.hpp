// Counting allocations, and letting them fail on request: operator new in all its forms, and the
// making of values by a TestHost. What operator new gives is filled with efi::kUnwrittenBits; a
// write beyond its ends ends the program when it is freed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace test {

enum class Failing { once, from_then_on };

// While it lives: counts allocations, and fails the `nth` (counted from 1; 0: none) or all from the
// nth; also those of more than `largest` bytes.
class AllocationFaults {
 public:
  explicit AllocationFaults(int nth = 0, Failing failing = Failing::once,
                            std::size_t largest = SIZE_MAX);
  ~AllocationFaults();
  AllocationFaults(const AllocationFaults&) = delete;
  AllocationFaults& operator=(const AllocationFaults&) = delete;

  int count() const;      // Allocations asked for so far.
  bool happened() const;  // Whether one has been made to fail.
};

// Counts one allocation; true when it is to fail.
bool allocation_fails();
bool allocation_fails(std::size_t bytes);

// Blocks from operator new that have not been deleted yet.
long live_blocks();

}  // namespace test
