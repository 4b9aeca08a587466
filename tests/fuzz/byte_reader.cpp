#include "tests/fuzz/byte_reader.hpp"

#include <bit>
#include <cmath>
#include <limits>

#include "host/efiutils/store.hpp"

namespace fuzz {

namespace {

using Limits = std::numeric_limits<double>;

// Values at which documented tests change their answer, and the edges of the number format.
constexpr double kTroublemakers[] = {
    0.0,
    -0.0,
    Limits::infinity(),
    -Limits::infinity(),
    Limits::quiet_NaN(),
    Limits::max(),
    -Limits::max(),
    Limits::min(),
    Limits::denorm_min(),
    Limits::epsilon(),
    1.0 + Limits::epsilon(),
    1.0 - Limits::epsilon() / 2,
    1e307,
    9.9e306,
    -1e307,
    1e104,
    2e104,
    1e154,
    1e-154,
    1e200,
    1e-200,
    1e-300,
    1e-30,
    1e-20,
    1e-15,
    1e-12,
    1e-10,
    2e-10,
    1e-9,
    0.1,
    0.5,
    0.9,
    2.5,
    2.99999999999,
    100000.0,
    100001.0,
    8000000.0,
    8000001.0,
    2147483647.0,
    -2147483648.0,
    4294967296.0,
    9007199254740993.0,
    1e18,
    1e19,
};

}  // namespace

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
  if (choice < 128) return kTroublemakers[(choice - 64) % std::ssize(kTroublemakers)];
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
