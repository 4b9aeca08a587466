#include "host/worksheet/values/source.hpp"

#include <algorithm>
#include <string_view>

#include "host/text/text.hpp"

namespace worksheet {

Source::Position Source::position(std::size_t offset) const {
  const std::string_view before = std::string_view(text).substr(0, std::min(offset, text.size()));
  const auto newlines = std::count(before.begin(), before.end(), '\n');
  const std::size_t line_start = newlines == 0 ? 0 : before.rfind('\n') + 1;
  return {line + static_cast<int>(newlines),
          character_count(before.substr(line_start)) + (newlines == 0 ? indent : 0) + 1};
}

std::string Source::line_words(int at_line) const {
  const std::string words = "line " + std::to_string(at_line);
  return origin.empty() ? words : words + " of " + origin;
}

std::vector<std::string> Source::lines() const {
  std::vector<std::string> lines(1, std::string(indent, ' '));
  for (const char c : text) {
    if (c == '\n')
      lines.emplace_back();
    else
      lines.back() += c;
  }
  return lines;
}

}  // namespace worksheet
