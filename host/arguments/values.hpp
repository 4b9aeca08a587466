// Values of every kind that a host can pass to a function. A recipe always gives the same one, bit
// for bit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "host/arguments/matrices.hpp"
#include "host/efiutils/store.hpp"

namespace arguments {

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
inline constexpr bool is_array(Form form) {
  return form <= Form::nested;
}

// The elements of an array.
struct Fill {
  Source source = Source::units;
  Structure structure = Structure::plain;
};

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
  Fill fill = {};
  std::uint64_t seed = 0;
  std::optional<double> special = {};  // Stands at one place of an array, counted through both
  std::size_t place = 0;               // parts and around again.
  int gap = 0;                         // Elements between the columns of an array.
  double re = 0.0;                     // Of a scalar.
  double im = 0.0;
  Behaviour behaviour = Behaviour::sum;
};

inline Recipe scalar(double re, double im = 0.0) {
  return {.form = Form::scalar, .re = re, .im = im};
}
inline Recipe array(Form form, int rows, int cols, Fill fill = {}, std::uint64_t seed = 0) {
  return {.form = form, .rows = rows, .cols = cols, .fill = fill, .seed = seed};
}
inline Recipe function(Behaviour behaviour, Form form = Form::function) {
  return {.form = form, .behaviour = behaviour};
}

// An array from ::operator new; null when there is no memory.
double* new_array(std::size_t count);

// The value; null when the store has no memory for it. Part arrays come from `new_part`. If `given`
// is not null, the numbers of an array come from there.
Anyval* make(efi::Store& store, const Recipe& recipe,
             const std::function<double()>* given = nullptr,
             double* (*new_part)(std::size_t count) = new_array);

// What the application's evaluator does with such a function value.
Anyval* apply(efi::Store& store, Anyval* function, const sCons* arguments);

}  // namespace arguments
