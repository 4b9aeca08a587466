// A picture as a script for gnuplot.
#pragma once

#include <string>

#include "host/worksheet/plot/picture.hpp"

namespace worksheet {

// The colours of the curves, on white; from the ninth on they repeat.
inline constexpr const char* kCurveColours[] = {"#3567a8", "#c8632c", "#3b8650", "#a83f52",
                                                "#7159a6", "#8a6d1f", "#2c8c99", "#6b7280"};
inline constexpr const char* kInk = "#1f2933";   // Axes and words.
inline constexpr const char* kGrid = "#d5dae1";  // Lines behind the curves.

// A script that writes the picture to standard output; its data are binary and follow it at once.
// An SVG's background is transparent.
std::string gnuplot_script(const Picture& picture, PictureFormat format);

}  // namespace worksheet
