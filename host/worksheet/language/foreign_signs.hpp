// What is said of signs and words that other languages have.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace worksheet {

// "; did you mean !=?" if what stands in the text where reading it failed is a sign or word of
// other languages for something that is written differently here; else empty.
std::string suggested_sign(std::string_view text, std::size_t at);

}  // namespace worksheet
