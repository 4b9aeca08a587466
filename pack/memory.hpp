// Arrays: the part arrays of results and the work arrays of a call.
//
// Both come from ::operator new and are freed by ::operator delete on every way out, until
// new_matrix hands a part array to the host. An array that cannot be had is null, whether memory is
// exhausted or its byte size does not fit the 32 bits of a matrix record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include "pack/host_interface.hpp"

namespace matrix_pack {

// Frees an array that came from ::operator new.
struct OperatorDelete {
  // Frees `p`.
  void operator()(void* p) const { ::operator delete(p); }
};
// An array that frees itself, or null.
template <class T>
using Array = std::unique_ptr<T[], OperatorDelete>;
using Doubles = Array<double>;

// `count` uninitialised elements. An array of none is not null.
template <class T>
Array<T> new_array(std::int64_t count) noexcept {
  static_assert(std::is_trivial_v<T>);
  constexpr auto kSize = static_cast<std::int64_t>(sizeof(T));
  // The size in bytes of an object is a signed word everywhere.
  if (count < 0 || count > std::numeric_limits<std::ptrdiff_t>::max() / kSize) return nullptr;
  const auto bytes = static_cast<std::size_t>(count * kSize);
  return Array<T>(static_cast<T*>(::operator new(bytes, std::nothrow)));
}
// The same for doubles.
inline Doubles new_doubles(std::int64_t count) noexcept {
  return new_array<double>(count);
}

// Work of a call: `count` uninitialised elements, on the stack while they are at most kFew: small
// matrices take less time than an allocation. False without memory.
template <class T, int kFew>
class Work {
 public:
  // Room for `count` elements.
  explicit Work(std::int64_t count)
      : many_(count > kFew ? new_array<T>(count) : nullptr),
        first_(count > kFew ? many_.get() : few_) {}
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;

  // The first element.
  T* get() const { return first_; }
  // Whether there was memory.
  explicit operator bool() const { return first_ != nullptr; }

 private:
  T few_[kFew];
  Array<T> many_;
  T* first_;
};

// Doubles that are all 0.
Doubles new_zeros(std::int64_t count) noexcept;

// A part array of a rows x cols matrix; null also when its byte size needs more than 32 bits.
Doubles new_part(std::int64_t rows, std::int64_t cols) noexcept;
// The same, all 0.
Doubles new_zero_part(std::int64_t rows, std::int64_t cols) noexcept;

// Gives a matrix without one of its part arrays that array, of zeros; false without memory.
bool provide_part(aMatrix* matrix, double* aMatrix::*part) noexcept;
// The same for both.
bool provide_parts(aMatrix* matrix) noexcept;

// A new matrix that adopts the part arrays (either may be null). Null when the host has no memory;
// the arrays are then freed.
aMatrix* new_matrix(EfiCallContext* context, int rows, int cols, Doubles re, Doubles im = nullptr);

// aMatrix::mk for a column of n elements. `bytes` is 8 n.
inline aMatrix* mk_column(IqlAllocator* allocator, int n, double* re, double* im, unsigned bytes) {
  return aMatrix::mk(allocator, n, 1, re, im, bytes);
}

}  // namespace matrix_pack
