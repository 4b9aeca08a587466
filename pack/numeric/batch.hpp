// Transformations that are kept back, so that each block of rows goes through many sweeps of them
// while it is in cache. An iteration never reads what waits for them, and every element sees the
// same operations in the same order as if each transformation were applied at once.
#pragma once

#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Sweeps kept back. `Sweep` is the record of one as the kernels take it.
template <class Sweep, class Transformation>
struct Batch {
  static constexpr int kMostSweeps = 64;

  Transformation* room = nullptr;  // Of the transformations, `capacity` of them; the owner's.
  Index capacity = 0;
  Index used = 0;
  int count = 0;
  Sweep sweeps[kMostSweeps];

  // Whether those kept back must be applied before there is room for `length` more, in `more`
  // sweeps.
  bool is_full(Index length, int more = 1) const {
    return count + more > kMostSweeps || used + length > capacity;
  }
  // Room for the transformations of one more sweep, to be filled in before they are applied. The
  // caller fills in sweeps[count - 1], too.
  Transformation* add(Index length) {
    Transformation* const place = room + used;
    used += length;
    ++count;
    return place;
  }
  void clear() { used = count = 0; }
};

}  // namespace matrix_pack
