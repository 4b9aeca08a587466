#include <algorithm>
#include <sstream>
#include <vector>

#include "fmt/format.h"
#include "host/packs/unit.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/output/json_output.hpp"
#include "host/worksheet/state/state.hpp"

namespace worksheet {

namespace {

// Counts what a value takes: nested values may be shared, and what shares them may be endless to
// write down.
class Measure {
 public:
  // Throws StateError.
  void add(const Value& v, std::size_t depth) {
    if (depth > kStateNestingLimit.most) throw StateError(kStateNestingLimit.message);
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

std::string statement_line(const Machine& machine, const Variable& variable) {
  static const Source kNoSource;
  Outcome outcome;
  outcome.source = has_kind(variable.value, kFunctionKind)
                       ? function_of(variable.value).source.get()
                       : &kNoSource;
  outcome.line = outcome.source->line;
  outcome.names = {variable.name};
  outcome.value = variable.value;
  outcome.store = &machine.store;
  std::ostringstream line;
  write_outcome(line, outcome, true);
  std::string text = line.str();
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace

std::string state_text(const Machine& machine) {
  std::vector<const Variable*> variables;
  for (const auto& [name, variable] : machine.variables())
    if (variable->defined) variables.push_back(variable.get());
  std::sort(variables.begin(), variables.end(),
            [](const Variable* a, const Variable* b) { return a->name < b->name; });
  std::vector<std::string> computed;
  for (const Variable* variable : variables) {
    const Unit* const unit = variable->value.unit;
    if (unit != nullptr && unit->origin() == Unit::Origin::calculated)
      computed.push_back("\"" + variable->name + "\"");
  }
  std::string text = fmt::format("{{\"worksheet_state\":1,\"computed_units\":[{}],\"variables\":[",
                                 joined(computed, ","));
  Measure measure;
  for (const Variable* variable : variables) {
    try {
      measure.add(variable->value, 0);
    } catch (const StateError& error) {
      throw StateError(fmt::format("{}: {}", variable->name, error.what()));
    }
    text += (variable == variables.front() ? "\n" : ",\n") + statement_line(machine, *variable);
    if (text.size() > kStateLimit.most) throw StateError(kStateLimit.message);
  }
  return text + "\n]}\n";
}

}  // namespace worksheet
