// The matrices of the digest: the same doubles on every machine. They are made from integers and
// powers of two alone, without a library function whose result or order could differ.
#pragma once

#include <string>
#include <vector>

#include "host/efiutils/evaluator.hpp"
#include "host/efiutils/store.hpp"

namespace digest {

// A host without any checks: the calls are what counts.
struct Host {
  Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  aMatrix* matrix(int rows, int cols, const std::vector<double>* re, const std::vector<double>* im);
  Anyval* scalar(double re, double im = 0.0) { return store.new_scalar(re, im); }
  // A function value; `body` is called with the two indices that the function `matrix` passes.
  using Body = Anyval* (*)(Host& host, double i, double j);
  Anyval* function(Body body) { return store.new_function(reinterpret_cast<void*>(body)); }

  efi::Store store;
  efi::Evaluator evaluator;
  EfiCallContext context;
};

struct Sample {
  std::string name;
  aMatrix* matrix;
};

// Square and rectangular, real and complex, regular and degenerate, from 1 x 1 to 100 x 100.
std::vector<Sample> make_samples(Host& host);

// One matrix of a kind that make_samples uses, for second arguments: "real", "complex", "definite",
// "deficient", ...
aMatrix* make_matrix(Host& host, const std::string& kind, int rows, int cols);

}  // namespace digest
