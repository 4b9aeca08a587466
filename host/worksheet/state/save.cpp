#include <algorithm>
#include <sstream>
#include <vector>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/units/unit.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/output/json_output.hpp"
#include "host/worksheet/output/printed_size.hpp"
#include "host/worksheet/session/commands.hpp"
#include "host/worksheet/state/state.hpp"

namespace worksheet {

namespace {

// Counts what a value takes: nested values may be shared, and what shares them may be endless to
// write down.
class Measure {
 public:
  // Throws StateError.
  void add(const Value& v, std::size_t depth) {
    if (is_too_deep(depth)) throw StateError(kStateNestingLimit.message);
    count(1);
    const bool known = is_number(v) || is_matrix(v) || is_text(v);
    if (!known && (depth > 0 || !(is_none(v) || has_kind(v, kFunctionKind))))
      throw StateError(fmt::format("{} within an array is not kept", kind_name(v)));
    if (!is_matrix(v)) return;
    aMatrix* const m = matrix(v);
    const std::ptrdiff_t elements = element_count(m);
    count(static_cast<std::size_t>(elements));
    if (!contains_ptrs(m) || m->re == nullptr) return;
    for (std::ptrdiff_t k = 0; k < elements; ++k)
      if (efi::is_nested_element(m->re[k])) add(nested(m->re[k]), depth + 1);
  }

 private:
  void count(std::size_t more) {
    total_ += more;
    if (total_ > kStateElementLimit.most) throw StateError(kStateElementLimit.message);
  }
  std::size_t total_ = 0;
};

// Null for a unit that someone wrote, and where there is none.
const char* origin_text(const Unit* unit) {
  if (unit == nullptr || unit->origin() == Unit::Origin::written) return nullptr;
  return unit->origin() == Unit::Origin::asked ? kAskedOrigin : kCalculatedOrigin;
}

void append_statement(std::ostream& text, const Machine& machine, const Variable& variable) {
  static const Source kNoSource;
  Outcome outcome;
  outcome.source = has_kind(variable.value, kFunctionKind)
                       ? function_of(variable.value).source.get()
                       : &kNoSource;
  outcome.line = outcome.source->line;
  outcome.names = {variable.name};
  outcome.value = variable.value;
  outcome.store = &machine.store;
  write_outcome(text, outcome, true);
}

}  // namespace

std::string state_text(const Machine& machine) {
  std::vector<const Variable*> variables = variable_list(machine);
  std::erase_if(variables, [](const Variable* variable) { return variable->name == kAnswer; });
  std::vector<std::string> origins;
  for (const Variable* variable : variables)
    if (const char* origin = origin_text(variable->value.unit))
      origins.push_back(fmt::format("\"{}\":\"{}\"", variable->name, origin));
  std::ostringstream text;
  text << fmt::format("{{\"worksheet_state\":1,\"unit_origins\":{{{}}},\"variables\":[",
                      joined(origins, ","));
  Measure measure;
  for (const Variable* variable : variables) {
    try {
      measure.add(variable->value, 0);
    } catch (const StateError& error) {
      throw StateError(fmt::format("{}: {}", variable->name, error.what()));
    }
    text << (variable == variables.front() ? "\n" : ",");
    append_statement(text, machine, *variable);
    if (static_cast<std::size_t>(text.tellp()) > kStateLimit.most)
      throw StateError(kStateLimit.message);
  }
  text << "]}\n";
  return std::move(text).str();
}

}  // namespace worksheet
