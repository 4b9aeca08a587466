// Text in markup that is HTML and XML alike.
#pragma once

#include <string>
#include <string_view>

namespace worksheet {

// The text with what markup gives a meaning escaped. Bytes that are no UTF-8 and control
// characters, which XML does not know, become replacement characters.
std::string escaped(std::string_view text);

}  // namespace worksheet
