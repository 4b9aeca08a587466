// gnuplot's SVG as a part of a page.
#pragma once

#include <string>
#include <string_view>

namespace worksheet {

// Whose colours a picture has: those of the page's style sheet, or its own.
enum class InlineColours { of_page, own };

// The svg element alone: its identifiers begin with "p<number>-", the ink of its axes is the colour
// of the text around it, and its curves have the style sheet's colours --c1 to --c8. `label` says
// what it shows to those who do not see it. Empty if the text is no SVG.
// With colours of its own it wants light paper.
std::string inline_svg(std::string_view svg, int number, std::string_view label,
                       InlineColours colours = InlineColours::of_page);

}  // namespace worksheet
