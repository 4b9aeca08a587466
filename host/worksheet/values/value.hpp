// The values of an evaluation. Numbers stand for themselves; everything else is a value of the
// host's store.
#pragma once

#include <complex>
#include <string>

#include "host/efiutils/store.hpp"
#include "pack/host_interface.hpp"

namespace worksheet {

class Unit;
using Number = std::complex<double>;

// Without initializers: every call makes an array for its arguments, which must cost nothing.
struct Value {
  double re;
  double im;
  Anyval* object;    // Null for a number.
  const Unit* unit;  // Null for a plain value.
};

// The value of a call that gives none.
extern Anyval kNoValue;

inline Value number_value(double re, double im = 0.0) {
  return {re, im, nullptr, nullptr};
}
inline Value number_value(const Number& z) {
  return {z.real(), z.imag(), nullptr, nullptr};
}
inline Value object_value(Anyval* object, const Unit* unit = nullptr) {
  return {0.0, 0.0, object, unit};
}

inline Value with_unit(Value v, const Unit* unit) {
  v.unit = unit;
  return v;
}
inline Value without_unit(const Value& v) {
  return with_unit(v, nullptr);
}

inline bool is_number(const Value& v) {
  return v.object == nullptr;
}
inline bool is_plain_real(const Value& v) {
  return v.object == nullptr && v.unit == nullptr && v.im == 0.0;
}
inline bool has_kind(const Value& v, std::int32_t kind) {
  return v.object != nullptr && v.object->kind == kind;
}
inline bool is_matrix(const Value& v) {
  return has_kind(v, kMatrixKind);
}
inline bool is_error(const Value& v) {
  return has_kind(v, kErrorKind);
}
inline bool is_text(const Value& v) {
  return has_kind(v, kStringKind);
}
inline bool is_function(const Value& v) {
  return has_kind(v, kFunctionKind) || has_kind(v, kOtherFunctionKind);
}
inline bool is_none(const Value& v) {
  return v.object == &kNoValue;
}

inline Number number(const Value& v) {
  return {v.re, v.im};
}
inline aMatrix* matrix(const Value& v) {
  return static_cast<aMatrix*>(v.object);
}
inline const char* text(const Value& v) {
  return static_cast<const aString*>(v.object)->text;
}

// The elements of a matrix in the order of storage; absent arrays read as zeros.
inline std::ptrdiff_t element_count(const aMatrix* m) {
  return static_cast<std::ptrdiff_t>(m->rows) * m->cols;
}
inline double re_at(const aMatrix* m, std::ptrdiff_t k) {
  return m->re == nullptr ? 0.0 : m->re[k];
}
inline double im_at(const aMatrix* m, std::ptrdiff_t k) {
  return m->im == nullptr ? 0.0 : m->im[k];
}
inline bool same_shape(const aMatrix* a, const aMatrix* b) {
  return a->rows == b->rows && a->cols == b->cols;
}

// A 1 x 1 matrix of numbers as its element, where a number is due; any other value as it is.
Value as_number(const Value& v);

// Whether a value fits any unit: a zero without one, or a matrix of them.
bool needs_no_unit(const Value& v);

// The value that a value of the host's stands for, and the one that a nested element holds.
Value unboxed(Anyval* object);
inline Value nested(double element) {
  return unboxed(efi::nested_value(element));
}

// What a value is, in a message: "a matrix", "text"...
const char* kind_name(const Value& v);

// "2 x 3", for messages.
std::string shape_text(const aMatrix* m);

}  // namespace worksheet
