#include "host/worksheet/data/headings.hpp"

#include <stdexcept>
#include <utility>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/worksheet/engine/limits.hpp"

namespace worksheet {

namespace {

// The place of the bracket that the last character of the text closes.
std::size_t opening_bracket(std::string_view text) {
  const char close = text.back(), open = close == ')' ? '(' : '[';
  int depth = 0;
  for (std::size_t at = text.size(); at-- > 0;) {
    if (text[at] == close) ++depth;
    if (text[at] == open && --depth == 0) return at;
  }
  return std::string_view::npos;
}

bool is_unit(std::string_view text) {
  if (text.size() > kUnitLimit.most) return false;
  try {
    return parse_unit(text) != nullptr;
  } catch (const std::runtime_error&) {
    return false;
  }
}

// "F/kN". A quantity has a letter or a word of its own: "km/h" is a unit by itself.
void split_at_slash(Heading& heading) {
  const std::string_view whole = heading.whole;
  const std::size_t slash = whole.find('/');
  if (slash == std::string_view::npos || slash == 0) return;
  const std::string_view name = trimmed(whole.substr(0, slash));
  const std::string_view unit = trimmed(whole.substr(slash + 1));
  const bool unit_alone = character_count(name) > 1 && is_unit(name);
  if (!is_unit(unit) || (name[0] >= '0' && name[0] <= '9')) return;
  if (unit_alone) {
    heading.doubt = fmt::format("\"{0}\" gives no unit; one stands in brackets: x ({0})", whole);
    return;
  }
  heading.unit = parse_unit(unit);
  heading.name = name;
}

void split_at_bracket(Heading& heading, std::size_t open) {
  const std::string_view whole = heading.whole;
  const std::string_view unit = trimmed(whole.substr(open + 1, whole.size() - open - 2));
  std::string_view name = trimmed(whole.substr(0, open));
  if (name.ends_with('/')) name = trimmed(name.substr(0, name.size() - 1));
  heading.name = name;
  if (unit.empty() || unit == "-" || unit.size() > kUnitLimit.most) return;
  try {
    heading.unit = parse_unit(unit);
  } catch (const std::runtime_error& error) {
    heading.doubt = fmt::format("\"{}\" gives no unit: {}", heading.whole, error.what());
  }
}

}  // namespace

Heading heading_of(std::string whole) {
  Heading heading;
  heading.whole = std::move(whole);
  heading.name = heading.whole;
  const bool bracket = heading.whole.ends_with(')') || heading.whole.ends_with(']');
  const std::size_t open = bracket ? opening_bracket(heading.whole) : std::string::npos;
  if (open != std::string::npos)
    split_at_bracket(heading, open);
  else
    split_at_slash(heading);
  return heading;
}

}  // namespace worksheet
