// Turns the bytes of a fuzzer's input into choices and numbers. Past the end all bytes are 0.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace fuzz {

using Bytes = std::span<const std::uint8_t>;

class ByteReader {
 public:
  explicit ByteReader(Bytes bytes) : rest_(bytes) {}

  std::uint8_t byte() {
    if (rest_.empty()) return 0;
    const std::uint8_t first = rest_.front();
    rest_ = rest_.subspan(1);
    return first;
  }

  // One of 0 ... n - 1, n <= 256.
  int below(int n) { return byte() % n; }
  // True for one byte in n, never for 0: what is rare is never chosen past the end.
  bool one_in(int n) { return below(n) == n - 1; }

  std::uint64_t word();

  // A double: a small integer, a number from a table of troublemakers, one of those read before, a
  // number of any magnitude, or any pattern of 64 bits but that of a nested element.
  double number();

 private:
  double fresh_number(int choice);

  Bytes rest_;
  std::array<double, 16> remembered_ = {};
  unsigned count_ = 0;
};

}  // namespace fuzz
