// Calls of every row and every export on representative arguments.
#pragma once

#include <algorithm>

#include "pack/exports.hpp"
#include "tests/calls/calls.hpp"
#include "tests/support/test_host.hpp"

namespace test {

// A function of calls::functions with arguments.
struct Call {
  std::string name;
  const calls::Function* function;
  calls::Arguments arguments;

  Anyval* run() const { return function->call(arguments); }
};

class CallCorpus {
 public:
  CallCorpus() : values(host.base()), functions(calls::functions(host.context())) {}

  // Odd values in all places, and samples: small ones of every kind, and some of an order that is
  // no multiple of any block of the kernels.
  std::vector<Call> calls() {
    std::vector<Call> all;
    for (const calls::Function& function : functions) {
      const auto add = [&](const std::string& what, const calls::Arguments& arguments) {
        all.push_back({function.name + " on " + what, &function, arguments});
      };
      for_odd_calls(function, values, add);
      for (const calls::Sample& sample : samples()) for_calls_with(function, values, sample, add);
    }
    return all;
  }

  // The first of the argument lists of the function in which m stands first.
  calls::Arguments arguments_of(const std::string& name, aMatrix* m) {
    return arguments_with(name, values, m)[0];
  }

  const calls::Function& function(const std::string& name) const {
    return *std::find_if(functions.begin(), functions.end(),
                         [&](const calls::Function& f) { return f.name == name; });
  }

  TestHost host;
  calls::Values values;
  std::vector<calls::Function> functions;

 private:
  std::vector<calls::Sample> samples() {
    std::vector<calls::Sample> all = {
        {"a nested scalar", host.nested(1, 1, {host.scalar(3, 4)})},
        {"a singular matrix", host.matrix({{1, 0, 0}, {0, 2, 0}, {0, 0, 0}})}};
    for (const auto& [kind, m, n] : {std::tuple{"definite", 3, 3},
                                     {"real", 3, 3},
                                     {"complex", 3, 3},
                                     {"real", 3, 2},
                                     {"real", 3, 1},
                                     {"imaginary", 3, 3},
                                     {"lean", 3, 3},
                                     {"real_gaps", 3, 3},
                                     {"complex_gaps", 3, 3},
                                     {"real_gaps", 3, 2},
                                     {"real", 37, 37},
                                     {"complex", 37, 37}})
      all.push_back({kind, calls::make_matrix(host.store(), kind, m, n)});
    return all;
  }
};

}  // namespace test
