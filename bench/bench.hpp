// Contests between the pack and its peers, and the host in which they take place.
//
// A file *_bench.cpp adds its contests while the program is loaded:
//
//   const bool added = bench::add("lu", [](int n) { return Contest{...}; });
//
// Eigen is called from files *_eigen.cpp, which are compiled for this processor; LAPACK's routines
// are called as they are.
#pragma once

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "host/efiutils/evaluator.hpp"
#include "host/efiutils/store.hpp"
#include "pack/host_interface.hpp"

namespace bench {

using Numbers = std::vector<double>;

// One way to compute a function. Every call works on an input of its own.
struct Contender {
  // Gets the inputs of `count` calls ready; not timed.
  std::function<void(int count)> prepare;
  // Makes call i; timed.
  std::function<void(int i)> run;
  // What call 0 computed, as numbers that all contenders must agree on.
  std::function<Numbers()> result;
};

// The contenders for one function and shape. An empty `run`: there is no such contender.
struct Contest {
  Contender core;     // The pack's core.
  Contender handler;  // The pack's handler, with a host's values.
  Contender lapack;
  Contender eigen;
  double tolerance;  // Of the results, relative to the largest number.
};

inline const std::vector<int> kSizes = {3, 10, 30, 100, 300, 1000};

// Adds a function's contests, one for each size.
bool add(std::string function, std::function<Contest(int n)> make, std::vector<int> sizes = kSizes);

// A host whose values last until `reclaim`.
class Host {
 public:
  Host() : context_{&store_, &evaluator_} {}
  EfiCallContext* context() { return &context_; }
  // `im` may be empty.
  aMatrix* matrix(int rows, int cols, const Numbers& re, const Numbers& im = {});
  // Values made from here on are reclaimed by each `reclaim`.
  void set_mark() { mark_ = store_.size(); }
  void reclaim() { store_.collect({}, mark_); }
  efi::Store& store() { return store_; }

 private:
  efi::Store store_;
  efi::Evaluator evaluator_;
  EfiCallContext context_;
  std::size_t mark_ = 0;
};

// A call of a handler with values that `arguments` makes. `numbers` reads the value returned.
Contender handler_call(std::function<std::vector<Anyval*>(Host&)> arguments,
                       std::function<Anyval*(EfiCallContext*, const std::vector<Anyval*>&)> call,
                       std::function<Numbers(Host&, Anyval*)> numbers);

// A computation in place, on a fresh copy of `input` each time. `numbers` reads what it leaves.
Contender in_place(Numbers input, std::function<void(double*)> compute,
                   std::function<Numbers(const double*)> numbers);

// The parts of a matrix: real, then imaginary if it has them.
Numbers parts_of(const aMatrix* m);

// A record over arrays that are not a host's, for calls of cores.
aMatrix borrowed(int rows, int cols, double* re, double* im = nullptr);

// Normally distributed numbers, the same ones for the same seed.
Numbers random_numbers(std::size_t count, unsigned seed);

// How LAPACK takes complex numbers: real and imaginary parts side by side. And back.
Numbers interleaved(const Numbers& re, const Numbers& im);
Numbers separated(const double* z, std::size_t count);

// y = A x for a column-major m x n matrix: to verify factors without multiplying them out.
Numbers times(int m, int n, const double* a, const Numbers& x);

}  // namespace bench
