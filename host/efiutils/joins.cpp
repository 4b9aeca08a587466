// Joining the results of a factorization into one value that remembers them.
#include <cstring>
#include <limits>
#include <new>
#include <span>

#include "host/efiutils/store.hpp"
#include "pack/host_interface.hpp"

namespace {

struct Joined {
  std::int64_t rows;
  std::int64_t cols;
  bool complex;
};

constexpr std::int64_t kElementBytes = sizeof(double);

bool fits_matrix(std::int64_t rows, std::int64_t cols) {
  constexpr std::int64_t kMostElements = std::numeric_limits<std::uint32_t>::max() / kElementBytes;
  constexpr std::int64_t kMostInt = std::numeric_limits<int>::max();
  return rows <= kMostInt && cols <= kMostInt && (cols == 0 || rows <= kMostElements / cols);
}

void copy_block(double* target, std::int64_t target_rows, const double* source,
                const aMatrix* shape) {
  for (std::int64_t j = 0; j < shape->cols; ++j) {
    double* const column = target + j * target_rows;
    const auto bytes = static_cast<std::size_t>(shape->rows) * sizeof(double);
    if (source == nullptr)
      std::memset(column, 0, bytes);
    else
      std::memcpy(column, source + j * shape->leading_dimension, bytes);
  }
}

// The part `which` of all `parts`, side by side or one above the other; null without memory.
double* join_part(std::span<aMatrix* const> parts, const Joined& joined, bool side_by_side,
                  double* aMatrix::*which) {
  const auto bytes = static_cast<std::size_t>(joined.rows * joined.cols * kElementBytes);
  auto* const target = static_cast<double*>(::operator new(bytes, std::nothrow));
  if (target == nullptr) return nullptr;
  std::int64_t offset = 0;
  for (const aMatrix* part : parts) {
    copy_block(target + offset, joined.rows, part->*which, part);
    offset += side_by_side ? joined.rows * part->cols : part->rows;
  }
  return target;
}

bool joined_shape(std::span<aMatrix* const> parts, bool side_by_side, Joined* shape) {
  *shape = {parts[0]->rows, parts[0]->cols, parts[0]->im != nullptr};
  for (const aMatrix* part : parts.subspan(1)) {
    if (side_by_side ? part->rows != shape->rows : part->cols != shape->cols) return false;
    (side_by_side ? shape->cols : shape->rows) += side_by_side ? part->cols : part->rows;
    shape->complex = shape->complex || part->im != nullptr;
  }
  return fits_matrix(shape->rows, shape->cols);
}

bool join(EfiCallContext* context, std::span<aMatrix* const> parts, bool side_by_side,
          aMatrix** out) {
  auto* const store = static_cast<efi::Store*>(context->allocator);
  Joined shape;
  if (!joined_shape(parts, side_by_side, &shape)) return false;
  double* const re = join_part(parts, shape, side_by_side, &aMatrix::re);
  double* const im = shape.complex ? join_part(parts, shape, side_by_side, &aMatrix::im) : nullptr;
  aMatrix* joined = nullptr;
  if (re != nullptr && (im != nullptr || !shape.complex)) {
    const auto bytes = static_cast<unsigned>(shape.rows * shape.cols * kElementBytes);
    joined = store->new_matrix(static_cast<int>(shape.rows), static_cast<int>(shape.cols), re, im,
                               bytes);
  }
  if (joined == nullptr) {
    ::operator delete(re);
    ::operator delete(im);
    return false;
  }
  if (!store->set_parts(joined, parts)) return false;
  *out = joined;
  return true;
}

}  // namespace

bool pack_two_r(EfiCallContext* context, aMatrix* first, aMatrix* second, aMatrix** out) {
  aMatrix* const parts[] = {first, second};
  return join(context, parts, true, out);
}

bool pack_two_rr(EfiCallContext* context, aMatrix* first, aMatrix* second, aMatrix** out) {
  aMatrix* const parts[] = {first, second};
  return join(context, parts, false, out);
}

bool pack_three_c(EfiCallContext* context, aMatrix* first, aMatrix* second, aMatrix* third,
                  aMatrix** out) {
  aMatrix* const parts[] = {first, second, third};
  return join(context, parts, true, out);
}
