// What a statement has drawn.
#pragma once

#include <string>

namespace worksheet {

struct Drawn {
  std::string file;  // As the worksheet names it; empty without one.
  std::string svg;   // For a report; empty unless pictures are kept.
  std::string description;
};

}  // namespace worksheet
