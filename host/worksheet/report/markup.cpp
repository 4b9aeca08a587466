#include "host/worksheet/report/markup.hpp"

#include "host/text/utf8.hpp"

namespace worksheet {

std::string escaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = character_length(text);
    const char c = text[0];
    if (length == 0)
      result += kReplacementCharacter;
    else if (c == '&')
      result += "&amp;";
    else if (c == '<')
      result += "&lt;";
    else if (c == '>')
      result += "&gt;";
    else if (c == '"')
      result += "&quot;";
    else
      result += text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result;
}

}  // namespace worksheet
