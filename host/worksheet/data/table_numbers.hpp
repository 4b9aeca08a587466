// Numbers in the cells of tables, as people of many countries write them.
#pragma once

#include <optional>
#include <string_view>

#include "host/worksheet/values/value.hpp"

namespace worksheet {

// Whether the cell says that a value is missing: it is blank, or NA, N/A, #N/A, <NA>, NULL, None or
// nan, in any case.
bool is_missing(std::string_view cell);

// The number in the cell; `decimal` is '.' or ','. Digits may stand in groups of three, apart by
// the other of the two signs, by an apostrophe or by a space that does not break.
std::optional<Number> number_in(std::string_view cell, char decimal);

}  // namespace worksheet
