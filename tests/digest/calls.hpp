// The calls of the digest: every row of the table and every other export, on the samples and on
// values of every kind in every place.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/digest/corpus.hpp"

namespace digest {

using Arguments = std::vector<Anyval*>;

struct Function {
  std::string name;
  std::size_t argument_count;
  std::function<Anyval*(const Arguments&)> call;
};

// The rows of the table through their handlers, then the exports that are not rows.
std::vector<Function> functions(Host& host);

// Whether it runs under the guard, where an arithmetic fault is an error value.
bool is_guarded(const std::string& name);

// Whether it moves elements whole and does not compute with them: nested ones stay nested.
bool moves_elements(const std::string& name);

// Values that calls are made on; all of them stay in the store.
struct Values {
  explicit Values(Host& host);

  Host& host;
  std::vector<Sample> samples;
  std::vector<Anyval*> numbers;   // Scalars of all sorts.
  std::vector<Anyval*> oddities;  // Values of every kind; the numbers too.
  std::vector<Anyval*> bodies;    // Functions for the third argument of `matrix`.
  Anyval* zero;
  Anyval* one;
  Anyval* tolerance;
};

// Makes all calls of `function`. `visit` gets a few words about the call and its value; values made
// by a call are gone after the visit.
using Visit = std::function<void(const std::string& what, const Anyval* value)>;
void run_calls(const Function& function, Values& values, const Visit& visit);

}  // namespace digest
