// Making matrices of the host's store.
#pragma once

#include <cstddef>
#include <memory>
#include <new>

#include "host/worksheet/values/value.hpp"

namespace worksheet {

class Machine;

struct OperatorDelete {
  void operator()(double* p) const { ::operator delete(p); }
};
using Part = std::unique_ptr<double[], OperatorDelete>;

// A matrix under construction. Its real array exists from the start, its imaginary one from the
// first nonzero imaginary part on.
class MatrixBuilder {
 public:
  // Elements are zero at first. Throws std::bad_alloc, also for a size beyond the host's records.
  MatrixBuilder(std::ptrdiff_t rows, std::ptrdiff_t cols);

  std::ptrdiff_t rows() const { return rows_; }
  std::ptrdiff_t cols() const { return cols_; }
  double* re() { return re_.get(); }
  double* im() { return im_.get(); }
  double* need_im();

  Number get(std::ptrdiff_t k) const { return {re_[k], im_ ? im_[k] : 0.0}; }
  void set(std::ptrdiff_t k, double re, double im) {
    re_[k] = re;
    if (im != 0.0 || im_) need_im()[k] = im;
  }
  void set(std::ptrdiff_t k, const Number& z) { set(k, z.real(), z.imag()); }

  // The matrix, without an imaginary array that holds only zeros. Throws std::bad_alloc.
  aMatrix* finish(efi::Store& store);

 private:
  std::ptrdiff_t rows_, cols_;
  Part re_, im_;
};

// A copy of `m`, with the part arrays that m has.
aMatrix* copy_of(Machine& machine, const aMatrix* m);

// What a nested array holds of a value: copies of matrices, marked as nested; others as they are.
Anyval* nested_copy(Machine& machine, const Value& v);

// A copy of the elements alone, with a real array, and an imaginary one that is not all zeros.
aMatrix* plain_copy(Machine& machine, const aMatrix* m);

// The number or matrix with every element multiplied; its unit stays.
Value scaled(Machine& machine, const Value& v, double factor);

}  // namespace worksheet
