// The units that there are: those of the file units.xml, whose definitions UDUNITS-2 reads.
//
// The file lies in share/matrix-pack below the directory of the program or one above it, both where
// programs are built and where they are installed. It is read when the first unit is met: many
// worksheets have none. Programs for Windows, where those libraries are not, have the list built
// in: unit_database_posix.cpp, unit_database_windows.cpp.
#pragma once

#include <string>
#include <vector>

#include "host/units/unit.hpp"

namespace worksheet {

// A unit of the file.
struct UnitEntry {
  std::string kind;                   // "Length, in m"
  std::vector<std::string> symbols;   // "ft"
  std::vector<std::string> names;     // "foot", "international_foot"
  std::vector<std::string> plurals;   // "feet", "international_feet"
  std::vector<std::string> prefixes;  // Those that it takes, by their symbols.
  bool takes_all = false;             // Every prefix of the SI.
  int turns = 0;                      // See NamedUnit.
  double scale = 1.0;
  Dimension dimension;
  bool proportional = true;  // Has neither an offset nor a logarithmic scale.
};

// A prefix of the SI.
struct UnitPrefix {
  const char* symbol;
  const char* name;
  double factor;
};
extern const std::vector<UnitPrefix> kUnitPrefixes;

struct UnitDatabase {
  std::string file;     // Where it was found,
  std::string udunits;  // and the database of UDUNITS-2 under it.
  std::vector<UnitEntry> entries;
};

// Throws std::runtime_error when a database is missing or damaged.
const UnitDatabase& unit_database();

}  // namespace worksheet
