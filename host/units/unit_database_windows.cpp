// The list as the machine that built the program read it, bit for bit
// (cmake/windows/write_units.cpp).
#include "host/units/unit_database.hpp"

namespace worksheet {

const UnitDatabase& unit_database() {
  static const UnitDatabase database = {"the program",
                                        "built in",
                                        {
#include "unit_entries.inc"
                                        }};
  return database;
}

}  // namespace worksheet
