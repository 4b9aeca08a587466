#include "host/worksheet/engine/matrices.hpp"

#include <algorithm>
#include <limits>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

namespace {

std::size_t part_bytes(std::ptrdiff_t rows, std::ptrdiff_t cols) {
  constexpr std::ptrdiff_t kMostInt = std::numeric_limits<std::int32_t>::max();
  constexpr std::ptrdiff_t kMostElements =
      std::numeric_limits<std::uint32_t>::max() / sizeof(double);
  if (rows > kMostInt || cols > kMostInt || (cols != 0 && rows > kMostElements / cols))
    throw std::bad_alloc();
  return static_cast<std::size_t>(rows * cols) * sizeof(double);
}

Part zero_part(std::size_t bytes) {
  Part part(static_cast<double*>(::operator new(bytes)));
  std::fill_n(part.get(), bytes / sizeof(double), 0.0);
  return part;
}

}  // namespace

MatrixBuilder::MatrixBuilder(std::ptrdiff_t rows, std::ptrdiff_t cols)
    : rows_(rows), cols_(cols), re_(zero_part(part_bytes(rows, cols))) {}

double* MatrixBuilder::need_im() {
  if (!im_) im_ = zero_part(part_bytes(rows_, cols_));
  return im_.get();
}

aMatrix* MatrixBuilder::finish(efi::Store& store) {
  const std::size_t bytes = part_bytes(rows_, cols_);
  if (im_ && std::all_of(im_.get(), im_.get() + rows_ * cols_, [](double x) { return x == 0.0; }))
    im_.reset();
  aMatrix* const made = store.new_matrix(static_cast<int>(rows_), static_cast<int>(cols_),
                                         re_.get(), im_.get(), static_cast<unsigned>(bytes));
  if (made == nullptr) throw std::bad_alloc();
  re_.release();
  im_.release();
  return made;
}

aMatrix* copy_of(Machine& machine, const aMatrix* m) {
  aMatrix* copy = nullptr;
  if (matrix_copy(&machine.context, const_cast<aMatrix*>(m), &copy) != nullptr)
    throw std::bad_alloc();
  return copy;
}

Anyval* nested_copy(Machine& machine, const Value& v) {
  if (!is_matrix(v)) return v.object;
  aMatrix* const copy = copy_of(machine, matrix(v));
  copy->flags |= kIsNestedValue;
  return copy;
}

aMatrix* plain_copy(Machine& machine, const aMatrix* m) {
  MatrixBuilder copy(m->rows, m->cols);
  for (std::ptrdiff_t j = 0, k = 0; j < m->cols; ++j)
    for (std::ptrdiff_t i = 0; i < m->rows; ++i, ++k) {
      const std::ptrdiff_t at = j * m->leading_dimension + i;
      copy.set(k, re_at(m, at), im_at(m, at));
    }
  return copy.finish(machine.store);
}

Value scaled(Machine& machine, const Value& v, double factor) {
  if (factor == 1.0) return v;
  if (is_number(v)) return with_unit(number_value(number(v) * factor), v.unit);
  aMatrix* const copy = copy_of(machine, matrix(v));
  for (double* part : {copy->re, copy->im})
    for (std::ptrdiff_t k = 0; part != nullptr && k < element_count(copy); ++k) part[k] *= factor;
  return object_value(copy, v.unit);
}

}  // namespace worksheet
