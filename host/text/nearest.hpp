// Names that someone may have meant who wrote another one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace worksheet {

// The number of characters to be inserted, left out, replaced or exchanged with their neighbour to
// make `b` of `a` (the optimal string alignment of Damerau and Levenshtein), but at most `most`.
// Bytes count as characters, and letters of either case as the same.
std::size_t edit_distance(std::string_view a, std::string_view b, std::size_t most);

// Those of the candidates that are nearest to `name`, in order: with the same letters in another
// case, else with one mistake in a name of three letters or more, else with two in one of six or
// more. Of names longer than 40 bytes none. Takes time in proportion to the candidates.
std::vector<std::string> nearest(std::string_view name, const std::vector<std::string>& candidates);

// "; did you mean a or b?" for up to three names; else empty.
std::string suggestion(const std::vector<std::string>& names);

}  // namespace worksheet
