// A small generator of random numbers (splitmix64): the same ones everywhere.
#pragma once

#include <cstdint>

namespace packcheck {

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
  // In [0, 1).
  double unit() { return static_cast<double>(next() >> 11) * 0x1p-53; }
  bool one_in(int n) { return below(n) == 0; }
};

}  // namespace packcheck
