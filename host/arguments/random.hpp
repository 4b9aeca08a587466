// A small generator of random numbers: the same ones everywhere.
#pragma once

#include <cstdint>

namespace arguments {

// SplitMix64 (Steele, Lea, Flood 2014): integers only.
struct Random {
  std::uint64_t state;

  std::uint64_t next() {
    std::uint64_t z = state += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }
  // 0 to n - 1.
  int below(int n) { return static_cast<int>(next() % static_cast<std::uint64_t>(n)); }
  bool one_in(int n) { return below(n) == 0; }
  // -most to most.
  int small(int most) { return below(2 * most + 1) - most; }
  // In [-1, 1), with 53 bits.
  double unit() {
    const auto k = static_cast<std::int64_t>(next() >> 10) - (std::int64_t{1} << 53);
    return static_cast<double>(k) * 0x1p-53;
  }
};

}  // namespace arguments
