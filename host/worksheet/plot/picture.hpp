// Pictures: what is drawn.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace worksheet {

// What is to be drawn, in numbers without units.
struct Picture {
  enum class Kind {
    lines,          // Curves, their points joined.
    points,         // The points alone.
    complex_plane,  // Points too; one scale for both axes where that can be.
    log_points,     // Joined points over a logarithmic y axis.
    heat_map,       // A colour for every element of a matrix.
  };
  struct Curve {
    std::string name;
    std::vector<double> x, y;  // Equally many. A point that is not finite is a gap.
  };

  Kind kind = Kind::lines;
  std::string title, x_label, y_label;
  std::vector<Curve> curves;

  // Of a heat map: the elements by columns, what they are, and the index of the first row and
  // column.
  std::ptrdiff_t rows = 0, cols = 0;
  std::string value_label;
  std::vector<double> elements;
  double origin = 0.0;
};

// `page` is an SVG for a page: its words are larger beside the picture, to be read on a telephone
// too.
enum class PictureFormat { svg, png, page };

}  // namespace worksheet
