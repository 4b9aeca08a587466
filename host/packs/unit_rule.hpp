// The unit rules of packs' rows: small expressions over the units of a call's arguments.
//
//   (%lambda (a b) EXPRESSION)    names the arguments, in order
//   (-EqDims a ...)               one unit for all, which the result has: that of the first
//   argument
//                                 that is not zero
//   (-EqDimsDimless a ...)        one unit for all; the result is plain
//   (-VDimless a ...)             plain numbers only; the result is plain
//   (-DimsLikeDiv a b)            the result has the unit of a divided by that of b
//   (-DimsLikeRoot a n)           ... the n-th root of the unit of a
//   (-DimsLikePower a n)          ... the n-th power
//   (-StripUnit a ...)            any units; the result is plain
//   (%sequence (EXPRESSION ...))  one after the other; the last one gives the result's unit
//
// A rule that is only a check's name applies it to all arguments. A row without a rule takes plain
// numbers only.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/units/unit.hpp"

namespace worksheet {

// What a rule makes of the units of a call.
struct UnitRuling {
  std::vector<double> factors;  // What the arguments' numbers are to be multiplied by first...
  UnitProduct result;           // ... and the result's afterwards, which then has this unit.
};

// Units that do not fit; `argument` is the one at fault, counted from 0. The message does not name
// the function.
struct UnitMismatch : std::runtime_error {
  UnitMismatch(std::size_t which, const std::string& what)
      : std::runtime_error(what), argument(which) {}
  std::size_t argument;
};

// The rule is no expression of the language.
struct UnitRuleError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// What is known of an argument: its unit, and whether it is a zero without one, which fits any.
struct UnitArgument {
  const Unit* unit = nullptr;
  bool fits_any = false;
};

// Throws UnitMismatch or UnitRuleError. `rule` may be null: no rule.
UnitRuling apply_unit_rule(const char* rule, std::span<const UnitArgument> arguments);

}  // namespace worksheet
