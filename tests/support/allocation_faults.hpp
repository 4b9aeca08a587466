// Counting allocations, and letting them fail on request: operator new in all its forms, and the
// making of values by a TestHost. What operator new gives is filled with efi::kUnwrittenBits; a
// write beyond its ends ends the program when it is freed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace test {

enum class Failing { once, from_then_on };

// While it lives: counts this thread's allocations, and fails the `nth` (counted from 1; 0: none)
// or all from the nth; also those of more than `largest` bytes. Inside of another one it stands in
// for that one.
class AllocationFaults {
 public:
  explicit AllocationFaults(int nth = 0, Failing failing = Failing::once,
                            std::size_t largest = SIZE_MAX);
  ~AllocationFaults();
  AllocationFaults(const AllocationFaults&) = delete;
  AllocationFaults& operator=(const AllocationFaults&) = delete;

  int count() const { return count_; }         // Allocations asked for so far.
  bool happened() const { return happened_; }  // Whether one has been made to fail.

  // Counts one allocation; true when it is to fail.
  bool next_fails(std::size_t bytes);

 private:
  int nth_;
  Failing failing_;
  std::size_t largest_;
  AllocationFaults* outer_;
  int count_ = 0;
  bool happened_ = false;
};

// The same for the faults in force in this thread, if any.
bool allocation_fails();
bool allocation_fails(std::size_t bytes);

// Blocks from operator new that have not been deleted yet.
long live_blocks();

}  // namespace test
