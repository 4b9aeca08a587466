// What an argument is made of. A recipe always gives the same value, bit for bit.
#pragma once

#include <cstdint>
#include <string>

#include "host/efiutils/store.hpp"
#include "pack/host_interface.hpp"

namespace packcheck {

enum class Form {
  real,       // A matrix with a real array,
  complex,    // with both part arrays,
  imaginary,  // with an imaginary array only,
  lean,       // without part arrays: all zero.
  nested,     // A matrix whose elements are values.
  scalar,
  string,
  function,        // Of the two kinds
  other_function,  // of function values.
  error,
  identifier,
  unknown,  // A kind that no pack knows.
};
inline constexpr int kForms = 12;
inline bool is_array(Form form) {
  return form <= Form::nested;
}

// How the elements of an array are chosen. What is put at one place is put at a place of the seed's
// choice, into an array that is ordinary elsewhere.
enum class Fill {
  plain,     // The small integer matrix of `plain_element`.
  integers,  // Random, small.
  ordinary,  // Random, in [-1, 1].
  symmetric,
  definite,
  triangular,
  identity,
  zeros,
  negative_zeros,
  repeated,  // All elements equal.
  zero_row,
  zero_column,
  graded,  // From 1e-200 to 1e200.
  tiny,    // Near the smallest normal number.
  denormal,
  huge,     // Near the largest number.
  edge104,  // Around 1e104.
  edge307,  // Around 1e307.
  one_nan,
  one_infinity,
  one_minus_infinity,
  all_nan,
  all_infinities,
  mixed,  // Of everything.
};
inline constexpr int kFills = 24;

// What a function value does when it is applied to (i, j).
enum class Behaviour {
  sum,      // i + 10 j
  complex,  // i + j·i
  nan,
  huge,
  matrix,
  string,
  error,
  late_error,  // A number first, an error later.
  late_matrix,
  nothing,  // Null: the host has no memory.
};
inline constexpr int kBehaviours = 10;

struct Recipe {
  Form form;
  int rows = 0;
  int cols = 0;
  Fill fill = Fill::plain;
  double re = 0.0;  // Of a scalar.
  double im = 0.0;
  Behaviour behaviour = Behaviour::sum;
  std::uint64_t seed = 0;
};

Recipe scalar(double re, double im = 0.0);
Recipe array(Form form, int rows, int cols, Fill fill = Fill::plain, std::uint64_t seed = 0);
Recipe function(Behaviour behaviour, Form form = Form::function);

// In a few words: "complex matrix 3 x 3, one NaN".
std::string describe(const Recipe& recipe);

// The value; null when the store has no memory for it.
Anyval* make(efi::Store& store, const Recipe& recipe);

// What the application's evaluator does with such a function value.
Anyval* apply(efi::Store& store, Anyval* function, const sCons* arguments);

}  // namespace packcheck
