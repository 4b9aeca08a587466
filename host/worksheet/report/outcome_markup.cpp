#include "host/worksheet/report/outcome_markup.hpp"

#include "fmt/format.h"
#include "host/worksheet/output/help_text.hpp"
#include "host/worksheet/output/listing.hpp"
#include "host/worksheet/report/markup.hpp"
#include "host/worksheet/report/mathml.hpp"

namespace worksheet {

std::string values_markup(const Outcome& outcome, const DisplayOptions& options) {
  if (outcome.help)
    return fmt::format("<pre>{}</pre>\n", escaped(help_text(*outcome.help, options.width)));
  if (outcome.variables)
    return fmt::format("<pre>{}</pre>\n", escaped(variables_text(*outcome.variables)));
  if (outcome.is_silent()) return {};
  if (is_none(outcome.value) && !(outcome.pictures.empty() && outcome.notes.empty())) return {};
  if (outcome.names.size() < 2)
    return math_markup(*outcome.store, outcome.names.empty() ? "" : outcome.names[0], outcome.value,
                       options);
  std::string result;
  const auto parts = outcome.store->parts(outcome.value.object);
  for (std::size_t k = 0; k < parts.size(); ++k)
    result += math_markup(*outcome.store, outcome.names[k],
                          object_value(parts[k], outcome.value.unit), options);
  return result;
}

}  // namespace worksheet
