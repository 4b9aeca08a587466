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
  if (outcome.is_silent() || outcome.is_quiet) return {};
  if (is_none(outcome.value) && !(outcome.pictures.empty() && outcome.notes.empty())) return {};
  DisplayOptions chosen = options;
  chosen.format = outcome.format.value_or(options.format);
  if (outcome.names.size() < 2)
    return math_markup(*outcome.store, outcome.names.empty() ? "" : outcome.names[0], outcome.value,
                       chosen);
  std::string result;
  const auto parts = outcome.store->parts(outcome.value.object);
  for (std::size_t k = 0; k < parts.size(); ++k)
    result += math_markup(*outcome.store, outcome.names[k],
                          object_value(parts[k], outcome.value.unit), chosen);
  return result;
}

std::string remarks_markup(const Outcome& outcome) {
  std::string result;
  for (const Trust& trust : outcome.trust) {
    const audit::Finding& finding = trust.finding;
    if (finding.level == audit::Level::ok) continue;
    const bool warns = finding.level == audit::Level::warning;
    result += fmt::format("<aside class=\"trust{}\">{}<code>{}</code>: {}</aside>\n",
                          warns ? " warning" : "", warns ? "<strong>!</strong> " : "",
                          escaped(finding.function), escaped(finding.text));
  }
  for (const std::string& note : outcome.notes)
    result += fmt::format("<p class=\"where\">Note: {}</p>\n", escaped(note));
  return result;
}

}  // namespace worksheet
