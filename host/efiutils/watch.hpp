// Watching a pack while it handles a call: what it must leave alone, and what it must give.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "host/efiutils/evaluator.hpp"
#include "host/efiutils/store.hpp"
#include "pack/host_interface.hpp"

namespace efi {

#pragma GCC visibility push(default)

// How closely the arguments are compared: their records, or the elements of arrays as well.
enum class Care { records, elements };

// Made before the call, asked after it.
class PackWatch {
 public:
  // Remembers the arguments, the open frames and the floating-point control words. The store and
  // the evaluator are those of the call's context.
  PackWatch(const Store& store, Evaluator& evaluator, std::span<Anyval* const> arguments,
            Care care);

  // What the pack did wrong, in words that follow its name ("changed its argument 2"); empty if
  // nothing. Closes the frames that it left open and restores the floating-point control words.
  std::string verdict(const Anyval* result);

 private:
  struct Argument {
    const Anyval* value;
    std::vector<std::uint64_t> words;  // The record, then a sum over each part array.
  };

  std::vector<std::uint64_t> words_of(const Anyval* value) const;
  bool restore_control();

  const Store& store_;
  Evaluator& evaluator_;
  Care care_;
  std::vector<Argument> arguments_;
  std::size_t depth_;
  std::size_t complaints_;
  std::uint32_t mxcsr_ = 0;
  std::uint16_t x87_ = 0;
};

#pragma GCC visibility pop

}  // namespace efi
