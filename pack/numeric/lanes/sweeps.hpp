// Runs of transformations of neighbouring columns, one run after the other, in an order that is
// kind to the first cache.
#pragma once

#include "pack/numeric/lanes/lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// From `first` to before `end`.
struct Range {
  Index first;
  Index end;
};

// What `range` gives for `count` runs, taken together; empty for none.
template <class RangeOf>
MATRIX_INLINE Range range_of_all(Index count, RangeOf range) {
  Range all = {__PTRDIFF_MAX__, -__PTRDIFF_MAX__};
  for (Index k = 0; k < count; ++k) {
    const Range run = range(k);
    all = {smaller(all.first, run.first), larger(all.end, run.end)};
  }
  return all;
}

// Columns that are in the first cache while all runs pass over them.
constexpr Index kTile = 32;

// Calls body(k, from, to) for stretches that make up the runs; range(k) is the whole of run k. The
// order: those transformations i of run k with i + lag k in the first tile, run by run, then those
// in the second tile... A run stays `lag` columns behind the run before it, so that a
// transformation i, of the columns i...i + lag, finds them as if the runs came one after the other.
template <class RangeOf, class Body>
MATRIX_INLINE void by_tiles(Index count, Index lag, RangeOf range, Body body) {
  const Range all = range_of_all(count, range);
  for (Index tile = all.first; tile < all.end + lag * count; tile += kTile)
    for (Index k = 0; k < count; ++k) {
      const Range run = range(k);
      const Index from = larger(tile - lag * k, run.first);
      const Index to = smaller(tile - lag * k + kTile, run.end);
      if (from < to) body(k, from, to);
    }
}

}  // namespace

}  // namespace matrix_pack::MATRIX_KERNEL_SET
