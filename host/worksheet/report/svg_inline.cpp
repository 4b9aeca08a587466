#include "host/worksheet/report/svg_inline.hpp"

#include <charconv>
#include <iterator>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/worksheet/plot/plot_script.hpp"
#include "host/worksheet/report/markup.hpp"

namespace worksheet {

namespace {

// "#3567a8" of "rgb( 53, 103, 168)"; empty if the text does not begin so. *length is its extent.
std::string hexadecimal(std::string_view text, std::size_t* length) {
  if (!text.starts_with("rgb(")) return {};
  const std::size_t end = text.find(')');
  if (end == std::string_view::npos) return {};
  *length = end + 1;
  std::string result = "#";
  std::size_t at = 4;
  for (int k = 0; k < 3; ++k) {
    const std::size_t next = std::min(text.find_first_of(",)", at), end);
    const std::string_view digits = trimmed(text.substr(at, next - at));
    int part = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), part);
    result += fmt::format("{:02x}", part & 0xFF);
    at = std::min(next + 1, end);
  }
  return result;
}

// The page's own colour for one of the script's; empty for others, which stay.
std::string page_colour(const std::string& colour) {
  if (colour == kInk) return "currentColor";
  if (colour == kGrid) return "var(--grid)";
  for (std::size_t k = 0; k < std::size(kCurveColours); ++k)
    if (colour == kCurveColours[k]) return fmt::format("var(--c{})", k + 1);
  return {};
}

// A tag in which identifiers have the prefix and colours are those that are asked for.
std::string tag_markup(std::string_view tag, const std::string& prefix, InlineColours colours) {
  std::string result;
  while (!tag.empty()) {
    std::size_t length = 1;
    std::string replaced;
    for (const std::string_view start : {" id='", " id=\"", "href='#", "href=\"#"})
      if (tag.starts_with(start)) {
        length = start.size();
        replaced = std::string(start) + prefix;
      }
    for (const std::string_view black : {"\"black\"", "'black'"})
      if (tag.starts_with(black)) {
        length = black.size();
        replaced = colours == InlineColours::own ? "'black'" : "\"currentColor\"";
      }
    if (const std::string colour = hexadecimal(tag, &length); !colour.empty()) {
      if (colours == InlineColours::of_page) replaced = page_colour(colour);
      if (replaced.empty()) replaced = tag.substr(0, length);
    }
    result += replaced.empty() ? std::string(tag.substr(0, length)) : replaced;
    tag.remove_prefix(length);
  }
  return result;
}

// Whether an element that begins so is of no use in a page, and how it ends.
std::string_view end_of_dropped(std::string_view tag) {
  if (tag.starts_with("<title")) return "</title>";
  if (tag.starts_with("<desc")) return "</desc>";
  if (tag.starts_with("<filter")) return "</filter>";
  return {};
}

}  // namespace

std::string inline_svg(std::string_view svg, int number, std::string_view label,
                       InlineColours colours) {
  const std::size_t start = svg.find("<svg");
  const std::size_t last = svg.rfind("</svg>");
  if (start == std::string_view::npos || last == std::string_view::npos) return {};
  const std::string prefix = fmt::format("p{}-", number);
  svg = svg.substr(start, last + 6 - start);
  std::string result = fmt::format("<svg role=\"img\" aria-label=\"{}\"", escaped(label));
  svg.remove_prefix(4);
  // What follows is the rest of the first tag; then text and tags in turn.
  std::size_t tag = svg.find('>') + 1;
  result += tag_markup(svg.substr(0, tag), prefix, colours);
  svg.remove_prefix(tag);
  while (!svg.empty()) {
    tag = std::min(svg.find('<'), svg.size());
    const std::string_view words = svg.substr(0, tag);
    for (const char c : words) result += c == '>' ? std::string("&gt;") : std::string(1, c);
    svg.remove_prefix(tag);
    if (const std::string_view end = end_of_dropped(svg); !end.empty()) {
      svg.remove_prefix(std::min(svg.find(end) + end.size(), svg.size()));
      continue;
    }
    const std::size_t length = std::min(svg.find('>'), svg.size() - 1) + 1;
    const std::string_view whole = svg.substr(0, length);
    svg.remove_prefix(length);
    // gnuplot opens many groups that stay empty.
    const std::size_t next = svg.find_first_not_of(" \t\n");
    if (whole.starts_with("<g ") && next != std::string_view::npos &&
        svg.substr(next).starts_with("</g>"))
      svg.remove_prefix(next + 4);
    else
      result += tag_markup(whole, prefix, colours);
  }
  return result;
}

}  // namespace worksheet
