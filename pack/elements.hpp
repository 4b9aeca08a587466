// Reading and writing matrix elements, with the rules for absent part arrays.
//
// i and j are counted from 0. An absent array reads as 0.0; it is created, zero-filled, when a
// nonzero value is first stored into it. A result therefore stays real unless a nonzero imaginary
// part is actually written.
#pragma once

#include <cstddef>

#include "pack/host_interface.hpp"

namespace matrix_pack {

// What an element of an absent array is read from.
extern const double kSharedZero;

// Whether a value is an array.
inline bool is_matrix(const Anyval* v) {
  return v->kind == kMatrixKind;
}
// The same for a number.
inline bool is_scalar(const Anyval* v) {
  return v->kind == kScalarKind;
}
// Whether a matrix is complex: whether it has an imaginary array, whatever that holds.
inline bool is_complex(const aMatrix* m) {
  return m->im != nullptr;
}

// A value that is known to be an array, as one.
inline aMatrix* as_matrix(Anyval* v) {
  return static_cast<aMatrix*>(v);
}
// A value that is known to be a number, as one.
inline aComplex* as_scalar(Anyval* v) {
  return static_cast<aComplex*>(v);
}

// The number that the host passes for a worksheet variable. What is not a scalar counts as 0.
inline double context_value(Anyval* v) {
  return is_scalar(v) ? as_scalar(v)->re : 0.0;
}

// Where element (i, j) stands in a part array with the leading dimension ld.
inline std::ptrdiff_t element_index(int ld, int i, int j) {
  return static_cast<std::ptrdiff_t>(j) * ld + i;
}

// Address of element (i, j) of `array`, or of the shared zero when the array is null. Read only.
inline const double* elem_ptr(const double* array, int ld, int i, int j) {
  return array == nullptr ? &kSharedZero : array + element_index(ld, i, j);
}

// The real part of element (i, j); 0 when the array is absent.
inline double elem_re(const aMatrix* m, int i, int j) {
  return *elem_ptr(m->re, m->leading_dimension, i, j);
}

// The imaginary part of element (i, j); 0 when the array is absent.
inline double elem_im(const aMatrix* m, int i, int j) {
  return *elem_ptr(m->im, m->leading_dimension, i, j);
}

// Stores x at (i, j) of the array in *slot. An absent array is created first, `bytes` long and
// zero-filled, unless x is zero or a NaN: then nothing happens. Throws std::bad_alloc.
void store_lazy(double** slot, int ld, int i, int j, unsigned bytes, double x);

// Stores x at (i, j) when the array exists.
inline void store_if_present(double* array, int ld, int i, int j, double x) {
  if (array != nullptr) array[element_index(ld, i, j)] = x;
}

// Stores a real part by store_lazy.
inline void set_re(aMatrix* m, int i, int j, double x) {
  store_lazy(&m->re, m->leading_dimension, i, j, m->byte_size, x);
}

// Stores an imaginary part by store_lazy.
inline void set_im(aMatrix* m, int i, int j, double x) {
  store_lazy(&m->im, m->leading_dimension, i, j, m->byte_size, x);
}

// Stores both parts by store_lazy.
inline void set_elem(aMatrix* m, int i, int j, double re, double im) {
  set_re(m, i, j, re);
  set_im(m, i, j, im);
}

// Sets or clears one bit of the flags word.
inline void set_flag(aMatrix* m, std::uint32_t bit, bool on) {
  m->flags = (m->flags & ~bit) | (on ? bit : 0u);
}

// True as soon as an element, by rows, has a real or imaginary magnitude of 1e307 or more.
bool has_huge_element(const aMatrix* m);

// True as soon as an off-diagonal element has a real or imaginary magnitude of 1e104 or more.
bool has_huge_offdiag(const aMatrix* m);

}  // namespace matrix_pack
