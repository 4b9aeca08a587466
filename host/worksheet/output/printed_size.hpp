// How much there is to be shown of a value.
#pragma once

#include <cstddef>

#include "host/efiutils/store.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

// Whether a value of that store takes at most so many elements to be shown whole. Nested values are
// counted wherever they stand: values may share them, so that a short worksheet can make a value
// which would take for ever. Those that are too deep are not counted.
bool fits(const efi::Store& store, const Value& value, std::size_t most);

// Whether a value within so many others is not shown any more.
bool is_too_deep(std::size_t depth);

}  // namespace worksheet
