// Calls of every row of the table and every other export: on the samples and on values of every
// kind in every place.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/calls/corpus.hpp"
#include "tests/calls/host.hpp"

namespace calls {

using Arguments = std::vector<Anyval*>;

struct Function {
  std::string name;
  std::size_t argument_count;
  std::int32_t takes;  // The kind of its first argument; kAnyKind where it takes any.
  std::function<Anyval*(const Arguments&)> call;
  bool reads_variable = false;  // Its last argument is a number of the worksheet's.
  bool is_guarded = false;      // It runs under the guard: an arithmetic fault is an error value.
};
inline constexpr std::int32_t kAnyKind = -1;

// The rows of the table through their handlers, then the exports that are not rows.
std::vector<Function> functions(EfiCallContext* context);

// Whether it moves elements whole and does not compute with them: nested ones stay nested.
bool moves_elements(const std::string& name);

// Values that calls are made on; all of them stay in the store.
struct Values {
  explicit Values(Host& host);

  Host& host;
  std::vector<Anyval*> numbers;   // Scalars of all sorts.
  std::vector<Anyval*> oddities;  // Values of every kind; the numbers too.
  std::vector<Anyval*> bodies;    // Functions for the third argument of `matrix`.
  Anyval* zero;
  Anyval* one;
  Anyval* tolerance;
};

// The argument lists in which the matrix m stands first.
std::vector<Arguments> arguments_with(const std::string& name, Values& values, aMatrix* m);

// Makes all calls of `function` that no sample is needed for, or those on one of them. `visit` gets
// a few words about the call and its arguments.
using Visit = std::function<void(const std::string& what, const Arguments& arguments)>;
void for_odd_calls(const Function& function, Values& values, const Visit& visit);
void for_calls_with(const Function& function, Values& values, const Sample& sample,
                    const Visit& visit);

}  // namespace calls
