// The elements of arrays that are made by recipe.
#pragma once

#include "host/packcheck/arguments/recipe.hpp"

namespace packcheck {

// The element at row `i` and column `j`, for a fill with one special place what is elsewhere.
double element(const Recipe& recipe, int i, int j);

}  // namespace packcheck
