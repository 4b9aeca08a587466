#include "tests/fuzz/byte_reader.hpp"

#include <bit>
#include <cmath>

#include "host/arguments/numbers.hpp"
#include "host/efiutils/store.hpp"

namespace fuzz {

std::uint64_t ByteReader::word() {
  std::uint64_t word = 0;
  for (int k = 0; k < 8; ++k) word = word << 8 | byte();
  return word;
}

double ByteReader::number() {
  const int choice = byte();
  if (choice >= 128 && choice < 192)
    return remembered_[static_cast<unsigned>(choice) % remembered_.size()];
  const double x = fresh_number(choice);
  remembered_[count_++ % remembered_.size()] = x;
  return x;
}

double ByteReader::fresh_number(int choice) {
  if (choice < 64) return choice % 2 == 0 ? choice / 2 : -(choice + 1) / 2;
  if (choice < 128)
    return arguments::kTroublemakers[(choice - 64) % std::ssize(arguments::kTroublemakers)];
  if (choice < 240) {
    const double mantissa = 1.0 + byte() / 256.0;
    const int exponent = 8 * (byte() - 128);
    return std::ldexp(choice % 2 == 0 ? mantissa : -mantissa, exponent);
  }
  // Neither a nested element, nor a NaN that a change of sign makes one.
  const auto x = std::bit_cast<double>(word());
  return efi::is_nested_element(std::copysign(x, -1.0)) ? 0.0 : x;
}

}  // namespace fuzz
