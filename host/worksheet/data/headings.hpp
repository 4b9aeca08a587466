// The headings of a table's columns, and the units in them.
#pragma once

#include <string>

#include "host/units/unit.hpp"

namespace worksheet {

// "F (kN)", "F [kN]" and "F/kN" are the name F and the unit kN.
struct Heading {
  std::string whole;
  std::string name;            // All of it where there is no unit.
  const Unit* unit = nullptr;  // Null too for "F (1)", "F [-]" and for what is no unit.
  std::string doubt;           // Why what stands in brackets is no unit; empty if all is well.
};

Heading heading_of(std::string whole);

}  // namespace worksheet
