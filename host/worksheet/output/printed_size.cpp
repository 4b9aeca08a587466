#include "host/worksheet/output/printed_size.hpp"

#include <cstring>

#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/stack.hpp"

namespace worksheet {

namespace {

// What is around a value, and so many bytes of a text, count as much as elements do.
constexpr std::size_t kAround = 8;
constexpr std::size_t kBytesOfElement = 8;

// Takes what each value needs from what is left.
class Count {
 public:
  Count(const efi::Store& store, std::size_t most) : store_(store), left_(most) {}

  bool value(const Value& v, std::size_t depth) {
    if (!take(kAround)) return false;
    if (is_text(v)) return take(std::strlen(text(v)) / kBytesOfElement);
    if (is_error(v)) {
      Anyval* const carried = static_cast<const aError*>(v.object)->value;
      return carried == nullptr || value(unboxed(carried), depth + 1);
    }
    return !is_matrix(v) || is_too_deep(depth) || elements(matrix(v), depth);
  }

 private:
  bool take(std::size_t elements) {
    if (elements > left_) return false;
    left_ -= elements;
    return true;
  }

  bool elements(const aMatrix* m, std::size_t depth) {
    const auto count = static_cast<std::size_t>(element_count(m));
    for (const double* part : {m->re, m->im})
      if (part != nullptr && !take(count)) return false;
    for (std::size_t k = 0; m->re != nullptr && k < count; ++k)
      if (efi::is_nested_element(m->re[k]) && !value(nested(m->re[k]), depth + 1)) return false;
    for (aMatrix* part : store_.parts(m))
      if (!value(object_value(part), depth)) return false;
    return true;
  }

  const efi::Store& store_;
  std::size_t left_;
};

}  // namespace

bool fits(const efi::Store& store, const Value& value, std::size_t most) {
  return Count(store, most).value(value, 0);
}

bool is_too_deep(std::size_t depth) {
  return depth > kPrintedNestingLimit.most || stack_is_low();
}

}  // namespace worksheet
