// Views of column-major arrays, real and complex, for cores and kernels alike: where element (0, 0)
// stands, and how far apart the columns are. A vector is a view whose distance is not looked at.
#pragma once

#include <cstddef>
#include <type_traits>

#include "pack/numeric/always_inline.hpp"
#include "pack/numeric/complex_arithmetic.hpp"

namespace matrix_pack {

// Counts and distances of elements.
using Index = std::ptrdiff_t;

// Of real numbers. T is double or const double.
template <class T>
struct RealViewOf {
  T* x;
  Index ld;

  MATRIX_INLINE T& operator()(Index i, Index j) const { return x[i + j * ld]; }
  MATRIX_INLINE T* column(Index j) const { return x + j * ld; }
  // The view that begins with element (i, j).
  MATRIX_INLINE RealViewOf from(Index i, Index j) const { return {x + (i + j * ld), ld}; }
  MATRIX_INLINE operator RealViewOf<const T>() const requires(!std::is_const_v<T>) {
    return {x, ld};
  }
};
using RealView = RealViewOf<double>;
using ConstRealView = RealViewOf<const double>;

// Of complex numbers, whose real and imaginary parts stand apart. (Too large for registers: what is
// not inlined takes it by reference.)
template <class T>
struct ComplexViewOf {
  T* re;
  T* im;
  Index ld = 0;

  MATRIX_INLINE Complex operator()(Index i, Index j) const {
    return {re[i + j * ld], im[i + j * ld]};
  }
  MATRIX_INLINE void set(Index i, Index j, Complex z) const {
    re[i + j * ld] = z.re;
    im[i + j * ld] = z.im;
  }
  MATRIX_INLINE ComplexViewOf column(Index j) const { return from(0, j); }
  MATRIX_INLINE ComplexViewOf from(Index i, Index j) const {
    return {re + (i + j * ld), im + (i + j * ld), ld};
  }
  // Element i of a vector.
  MATRIX_INLINE Complex operator[](Index i) const { return {re[i], im[i]}; }
  MATRIX_INLINE void set(Index i, Complex z) const { set(i, 0, z); }
  MATRIX_INLINE ComplexViewOf operator+(Index i) const { return {re + i, im + i, ld}; }
  MATRIX_INLINE operator ComplexViewOf<const T>() const requires(!std::is_const_v<T>) {
    return {re, im, ld};
  }
};
using ComplexView = ComplexViewOf<double>;
using ConstComplexView = ComplexViewOf<const double>;

}  // namespace matrix_pack
