#include "host/packs/unit_names.hpp"

#include <udunits2.h>

#include <map>
#include <memory>
#include <optional>

namespace worksheet {

namespace {

struct UnitFree {
  void operator()(ut_unit* unit) const { ut_free(unit); }
};
using UnitHandle = std::unique_ptr<ut_unit, UnitFree>;

// What the database lacks, in its own words.
constexpr const char* kFurtherUnits[][2] = {{"Wh", "W hour"}, {"deg", "degree"}};

ut_system* open_system() {
  ut_set_error_message_handler(ut_ignore);
  ut_system* const system = ut_read_xml(nullptr);
  if (system == nullptr) throw std::runtime_error("the database of units cannot be read");
  for (const auto& [symbol, definition] : kFurtherUnits) {
    const UnitHandle unit(ut_parse(system, definition, UT_ASCII));
    ut_map_symbol_to_unit(symbol, UT_ASCII, unit.get());
  }
  return system;
}

// Read when the first unit is met: many worksheets have none.
ut_system* unit_system() {
  static ut_system* const system = open_system();
  return system;
}

// What a visit to a unit gathers.
struct Definition {
  double scale = 1.0;
  Dimension dimension;
  bool proportional = true;  // Neither offset nor logarithm.
};

ut_status visit(const ut_unit* unit, Definition* definition);

void add_basic(const ut_unit* unit, int power, Definition* definition) {
  if (ut_is_dimensionless(unit)) return;
  definition->dimension[ut_get_symbol(unit, UT_ASCII)] = power;
}

ut_status visit_basic(const ut_unit* unit, void* definition) {
  add_basic(unit, 1, static_cast<Definition*>(definition));
  return UT_SUCCESS;
}

ut_status visit_product(const ut_unit*, int count, const ut_unit* const* units, const int* powers,
                        void* definition) {
  for (int k = 0; k < count; ++k)
    add_basic(units[k], powers[k], static_cast<Definition*>(definition));
  return UT_SUCCESS;
}

ut_status visit_galilean(const ut_unit*, double scale, const ut_unit* underlying, double offset,
                         void* definition) {
  auto* const d = static_cast<Definition*>(definition);
  d->scale *= scale;
  d->proportional = d->proportional && offset == 0.0;
  return visit(underlying, d);
}

ut_status visit_timestamp(const ut_unit*, const ut_unit*, double, void* definition) {
  static_cast<Definition*>(definition)->proportional = false;
  return UT_SUCCESS;
}

ut_status visit_logarithmic(const ut_unit*, double, const ut_unit*, void* definition) {
  static_cast<Definition*>(definition)->proportional = false;
  return UT_SUCCESS;
}

ut_status visit(const ut_unit* unit, Definition* definition) {
  constexpr ut_visitor kVisitor = {visit_basic, visit_product, visit_galilean, visit_timestamp,
                                   visit_logarithmic};
  return ut_accept_visitor(unit, &kVisitor, definition);
}

std::optional<Definition> look_up(const std::string& name) {
  const UnitHandle unit(ut_parse(unit_system(), name.c_str(), UT_UTF8));
  if (unit == nullptr) return std::nullopt;
  Definition definition;
  visit(unit.get(), &definition);
  return definition;
}

}  // namespace

const NamedUnit* find_named_unit(const std::string& name) {
  static std::map<std::string, NamedUnit> known;
  if (const auto found = known.find(name); found != known.end()) return &found->second;
  const auto definition = look_up(name);
  if (!definition) return nullptr;
  if (!definition->proportional)
    throw std::runtime_error(name + " has an offset or a logarithmic scale; use a unit without");
  return &known.emplace(name, NamedUnit{name, definition->scale, definition->dimension})
              .first->second;
}

}  // namespace worksheet
