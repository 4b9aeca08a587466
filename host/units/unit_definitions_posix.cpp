#include <udunits2.h>

#include <stdexcept>

#include "host/units/unit_definitions.hpp"

namespace worksheet {

namespace {

struct UnitFree {
  void operator()(ut_unit* unit) const { ut_free(unit); }
};
using UnitHandle = std::unique_ptr<ut_unit, UnitFree>;

ut_status visit(const ut_unit* unit, UnitDefinition* definition);

// The radian, too, is a base unit to the library.
void add_basic(const ut_unit* unit, int power, UnitDefinition* definition) {
  if (const char* const symbol = ut_get_symbol(unit, UT_ASCII))
    definition->dimension[symbol] = power;
}

ut_status visit_basic(const ut_unit* unit, void* definition) {
  add_basic(unit, 1, static_cast<UnitDefinition*>(definition));
  return UT_SUCCESS;
}

ut_status visit_product(const ut_unit*, int count, const ut_unit* const* units, const int* powers,
                        void* definition) {
  for (int k = 0; k < count; ++k)
    add_basic(units[k], powers[k], static_cast<UnitDefinition*>(definition));
  return UT_SUCCESS;
}

ut_status visit_galilean(const ut_unit*, double scale, const ut_unit* underlying, double offset,
                         void* definition) {
  auto* const d = static_cast<UnitDefinition*>(definition);
  d->scale *= scale;
  d->proportional = d->proportional && offset == 0.0;
  return visit(underlying, d);
}

ut_status visit_timestamp(const ut_unit*, const ut_unit*, double, void* definition) {
  static_cast<UnitDefinition*>(definition)->proportional = false;
  return UT_SUCCESS;
}

ut_status visit_logarithmic(const ut_unit*, double, const ut_unit*, void* definition) {
  static_cast<UnitDefinition*>(definition)->proportional = false;
  return UT_SUCCESS;
}

ut_status visit(const ut_unit* unit, UnitDefinition* definition) {
  constexpr ut_visitor kVisitor = {visit_basic, visit_product, visit_galilean, visit_timestamp,
                                   visit_logarithmic};
  return ut_accept_visitor(unit, &kVisitor, definition);
}

template <class Deleter>
ut_system* system_of(const std::unique_ptr<void, Deleter>& system) {
  return static_cast<ut_system*>(system.get());
}

}  // namespace

void UnitDefinitions::SystemFree::operator()(void* system) const {
  ut_free_system(static_cast<ut_system*>(system));
}

UnitDefinitions::UnitDefinitions() {
  ut_set_error_message_handler(ut_ignore);
  system_.reset(ut_read_xml(nullptr));
  if (system_ == nullptr) throw std::runtime_error("the database of UDUNITS-2 cannot be read");
}

std::optional<UnitDefinition> UnitDefinitions::add(const std::string& text,
                                                   const std::vector<std::string>& names,
                                                   const std::vector<std::string>& symbols) {
  ut_system* const system = system_of(system_);
  const UnitHandle unit(text.empty() ? ut_new_base_unit(system)
                                     : ut_parse(system, text.c_str(), UT_UTF8));
  if (unit == nullptr) return std::nullopt;
  // The library looks among names first, whatever case they are in.
  for (const auto* list : {&names, &symbols})
    for (const std::string& name : *list) {
      ut_unmap_name_to_unit(system, name.c_str(), UT_UTF8);
      ut_unmap_symbol_to_unit(system, name.c_str(), UT_UTF8);
    }
  for (const std::string& name : names) ut_map_name_to_unit(name.c_str(), UT_UTF8, unit.get());
  for (const std::string& symbol : symbols)
    ut_map_symbol_to_unit(symbol.c_str(), UT_UTF8, unit.get());
  if (text.empty()) ut_map_unit_to_symbol(unit.get(), symbols.at(0).c_str(), UT_ASCII);
  UnitDefinition definition;
  visit(unit.get(), &definition);
  return definition;
}

std::string UnitDefinitions::path() {
  ut_status status = UT_SUCCESS;
  const char* const path = ut_get_path_xml(nullptr, &status);
  return path == nullptr ? "" : path;
}

}  // namespace worksheet
