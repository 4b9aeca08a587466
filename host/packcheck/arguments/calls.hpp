// The calls that each function of a pack is put through. The list depends on the function, the
// depth and the seed only, so that a call is named by its place in it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/arguments/values.hpp"
#include "host/packcheck/pack.hpp"

namespace packcheck {

using arguments::Recipe;

// How many calls: a part of those of quick, the usual list, or a longer one.
enum class Depth { brief, quick, full };

// Why a call is in the list.
enum class Family {
  base,    // Arguments that the function takes, in every form of their arrays and a few sizes.
  kinds,   // A value of each kind in each place.
  shapes,  // Empty, odd, tall, wide and unequal arrays.
  values,  // NaN, infinities, denormals, the largest and the smallest numbers, special matrices.
  random,
};

struct Call {
  Family family;
  std::vector<Recipe> arguments;
};

// A function and arguments, context values excluded, for which it gives a value.
struct Target {
  Function function;
  std::vector<Recipe> base;
  bool is_taken = false;  // Whether it does: for some functions no such arguments are found.
};

// The arguments to try, one after the other, until the function gives a value.
std::vector<std::vector<Recipe>> first_attempts(const Function& function);
// The base of a function for which none of them gave one.
std::vector<Recipe> fallback_base(const Function& function);

std::vector<Call> calls_of(const Target& target, Depth depth, std::uint64_t seed);

// The arguments with the usual values of the function's context behind them.
std::vector<Recipe> with_context(const Function& function, std::vector<Recipe> arguments);

std::string describe(const Function& function, const Call& call);

}  // namespace packcheck
