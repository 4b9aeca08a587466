// The services that a pack asks of its host: making values, and small operations on matrices.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "host/efiutils/store.hpp"
#include "pack/host_interface.hpp"

namespace {

constexpr const char* kOutOfMemory = "out of memory";
constexpr std::uint64_t kMostBytes = std::numeric_limits<std::uint32_t>::max();

efi::Store* store_of(IqlAllocator* allocator) {
  return static_cast<efi::Store*>(allocator);
}

struct OperatorDelete {
  void operator()(double* p) const { ::operator delete(p); }
};
using Part = std::unique_ptr<double[], OperatorDelete>;

Part new_part(std::uint64_t bytes) {
  if (bytes > kMostBytes) return nullptr;
  return Part(static_cast<double*>(::operator new(static_cast<std::size_t>(bytes), std::nothrow)));
}

// The columns of a part array, without gaps between them.
void copy_columns(const aMatrix* source, const double* from, double* to) {
  const auto bytes = static_cast<std::size_t>(source->rows) * sizeof(double);
  for (std::ptrdiff_t j = 0; j < source->cols; ++j)
    std::memcpy(to + j * source->rows, from + j * source->leading_dimension, bytes);
}

// A copy of `source`; with `add_imag` always with an imaginary array.
const char* copy_matrix(EfiCallContext* context, const aMatrix* source, aMatrix** copy,
                        bool add_imag) {
  const std::uint64_t bytes = static_cast<std::uint64_t>(source->rows) *
                              static_cast<std::uint64_t>(source->cols) * sizeof(double);
  Part re, im;
  if (source->re != nullptr) {
    if (!(re = new_part(bytes))) return kOutOfMemory;
    copy_columns(source, source->re, re.get());
  }
  if (source->im != nullptr || add_imag) {
    if (!(im = new_part(bytes))) return kOutOfMemory;
    if (source->im != nullptr)
      copy_columns(source, source->im, im.get());
    else
      std::memset(im.get(), 0, static_cast<std::size_t>(bytes));
  }
  aMatrix* const made = store_of(context->allocator)
                            ->new_matrix(source->rows, source->cols, re.get(), im.get(),
                                         static_cast<unsigned>(bytes));
  if (made == nullptr) return kOutOfMemory;
  re.release();
  im.release();
  made->flags = source->flags;
  *copy = made;
  return nullptr;
}

Anyval* new_error(EfiCallContext* context, const char* message, Anyval* value, int arg) {
  efi::Store* const store = store_of(context->allocator);
  const aString* const text = store->new_string(message);
  if (text == nullptr) return sError_OutOfMemory;
  aError* const error = store->new_error(text, 0, arg, value);
  return error != nullptr ? error : sError_OutOfMemory;
}

}  // namespace

aString* aString::mk(IqlAllocator* allocator, const char* text) {
  return store_of(allocator)->new_string(text);
}

aMatrix* aMatrix::mk(IqlAllocator* allocator, int rows, int cols, double* re, double* im,
                     unsigned bytes) {
  return store_of(allocator)->new_matrix(rows, cols, re, im, bytes);
}

aError* aError::mk(IqlAllocator* allocator, const aString* message, int mark, int arg,
                   Anyval* value) {
  return store_of(allocator)->new_error(message, mark, arg, value);
}

Anyval* mkError(EfiCallContext* context, const char* message, int arg) {
  return new_error(context, message, nullptr, arg);
}

Anyval* patch_error(EfiCallContext* context, const char* message, Anyval* value, int arg) {
  return new_error(context, message, value, arg);
}

const char* matrix_copy(EfiCallContext* context, aMatrix* source, aMatrix** copy) {
  return copy_matrix(context, source, copy, false);
}

const char* matrix_copy_add_imag(EfiCallContext* context, aMatrix* source, aMatrix** copy) {
  return copy_matrix(context, source, copy, true);
}

bool symmetry(aMatrix* matrix) {
  if (matrix->rows != matrix->cols) return false;
  const std::ptrdiff_t n = matrix->rows;
  const std::ptrdiff_t ld = matrix->leading_dimension;
  for (const double* part : {matrix->re, matrix->im}) {
    if (part == nullptr) continue;
    for (std::ptrdiff_t j = 1; j < n; ++j)
      for (std::ptrdiff_t i = 0; i < j; ++i)
        if (part[j * ld + i] != part[i * ld + j]) return false;
  }
  return true;
}

void renormalize_matrix_cols(aMatrix* matrix) {
  const std::ptrdiff_t ld = matrix->leading_dimension;
  for (std::ptrdiff_t j = 0; j < matrix->cols; ++j) {
    double* const parts[] = {matrix->re == nullptr ? nullptr : matrix->re + j * ld,
                             matrix->im == nullptr ? nullptr : matrix->im + j * ld};
    double largest = 0.0;
    for (const double* part : parts)
      for (int i = 0; part != nullptr && i < matrix->rows; ++i)
        if (const double x = std::fabs(part[i]); x > largest) largest = x;
    if (largest == 0.0) continue;
    // A power of two brings the largest part between 1/2 and 1: the squares neither overflow nor
    // vanish, and the scaling is exact.
    int exponent;
    std::frexp(largest, &exponent);
    // (No one power brings the least numbers there; upwards two are exact, too.)
    const int most = std::max(exponent, -1000);
    const double power = std::ldexp(1.0, -most);
    const double rest = std::ldexp(1.0, most - exponent);
    double sum = 0.0;
    for (double* part : parts)
      for (int i = 0; part != nullptr && i < matrix->rows; ++i) {
        part[i] = part[i] * power * rest;
        sum += part[i] * part[i];
      }
    const double length = std::sqrt(sum);
    for (double* part : parts)
      for (int i = 0; part != nullptr && i < matrix->rows; ++i) part[i] /= length;
  }
}

bool contains_ptrs(aMatrix* matrix) {
  if (matrix->flags & kHoldsNested) return true;
  const std::size_t count = matrix->byte_size / sizeof(double);
  for (const double* part : {matrix->re, matrix->im})
    for (std::size_t k = 0; part != nullptr && k < count; ++k)
      if (efi::is_nested_element(part[k])) return true;
  return false;
}

void zero_col(int col, int first_row, aMatrix* matrix) {
  const std::ptrdiff_t start = static_cast<std::ptrdiff_t>(col) * matrix->leading_dimension;
  for (double* part : {matrix->re, matrix->im})
    for (int i = first_row; part != nullptr && i < matrix->rows; ++i) part[start + i] = 0.0;
}

const char* MtoVcol(aMatrix* matrix, int col, aVector* vector) {
  if (col < 0 || col >= matrix->cols) return "invalid index";
  if (vector->length != matrix->rows) return "array size mismatch";
  const std::ptrdiff_t start = static_cast<std::ptrdiff_t>(col) * matrix->leading_dimension;
  for (int i = 0; i < matrix->rows; ++i)
    vector->elements[i] = matrix->re == nullptr ? 0.0 : matrix->re[start + i];
  return nullptr;
}

int nonint(double x) {
  return !std::isfinite(x) || std::floor(x) != x;
}
