// Definitions of units, read by UDUNITS-2 on top of its own database.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/units/unit.hpp"

namespace worksheet {

// What a definition says: `scale` base units of a dimension.
struct UnitDefinition {
  double scale = 1.0;
  Dimension dimension;
  bool proportional = true;  // Neither offset nor logarithm.
};

// A system of units that grows as definitions are added to it.
class UnitDefinitions {
 public:
  // Reads the database of UDUNITS-2. Throws std::runtime_error if it cannot be read.
  UnitDefinitions();

  // Gives the names and symbols to what the text defines, be they taken or not; nothing if it
  // defines nothing. An empty text makes a base unit of the first symbol.
  std::optional<UnitDefinition> add(const std::string& text, const std::vector<std::string>& names,
                                    const std::vector<std::string>& symbols);

  // The path of the database of UDUNITS-2.
  static std::string path();

 private:
  struct SystemFree {
    void operator()(void* system) const;
  };
  std::unique_ptr<void, SystemFree> system_;
};

}  // namespace worksheet
