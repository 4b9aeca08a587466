// The outcome of a call as a hash that is the same on every machine if the outcome is.
#pragma once

#include <cstdint>
#include <string>

#include "host/efiutils/store.hpp"

namespace calls {

// FNV-1a over 64-bit words, taken byte by byte from the low end.
struct Hash {
  std::uint64_t value = 0xCBF29CE484222325u;

  void word(std::uint64_t word);
  void text(const char* text);
  // Bit for bit, signed zeros included. Every NaN counts as the same one: which sign and payload an
  // operation gives its NaN is the processor's choice.
  void number(double x);
};

// Adds a value of the host's with all that it consists of: kind, shape, which part arrays exist,
// every bit of them, joined parts, and an error's message, mark and argument. With `nested` an
// element may be a nested value; else such a pattern is a NaN that arithmetic passed on.
void add_value(Hash& hash, const efi::Store& store, const Anyval* value, bool nested);

// The hash of one value.
std::uint64_t bits_of(const efi::Store& store, const Anyval* value, bool nested = true);

// The word with which the guard reports an arithmetic fault, when `value` is such an error; else
// null.
const char* fault_word(const Anyval* value);

// A value for people: a few words; in lines of their own, the elements of a small matrix.
std::string describe(const Anyval* value);

}  // namespace calls
