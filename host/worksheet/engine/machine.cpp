#include "host/worksheet/engine/machine.hpp"

#include <algorithm>

#include "fmt/format.h"
#include "host/efiutils/fault_translation.hpp"
#include "host/packs/watched_call.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/stack.hpp"

namespace worksheet {

std::string signature_text(const Function& function) {
  return fmt::format("{}({})", function.name, joined(function.parameters, ", "));
}

// The part of the machine's state that belongs to one call of a worksheet function.
struct Machine::Activation {
  Activation(Machine& m, const Value* parameters, const Source* source)
      : machine(m), saved_parameters(m.parameters_), saved_source(m.source_) {
    m.parameters_ = parameters;
    m.source_ = source;
  }
  ~Activation() {
    machine.parameters_ = saved_parameters;
    machine.source_ = saved_source;
  }
  Machine& machine;
  const Value* saved_parameters;
  const Source* saved_source;
};

Machine::Machine() {
  efi::install_fault_translation();
  evaluator.apply_function = [this](Anyval* function, const sCons* arguments) {
    return apply(function, arguments);
  };
  Variable* const origin = variable("ORIGIN");
  origin->value = number_value(0.0);
  origin->defined = true;
  Variable* const tolerance = variable("TOL");
  tolerance->value = number_value(kDefaultTolerance);
  tolerance->defined = true;
}

Machine::~Machine() = default;

Variable* Machine::variable(std::string_view name) {
  auto& slot = variables_[std::string(name)];
  if (slot == nullptr) slot = std::make_unique<Variable>(Variable{std::string(name), {}});
  return slot.get();
}

const Variable* Machine::find_variable(const std::string& name) const {
  const auto found = variables_.find(name);
  return found == variables_.end() || !found->second->defined ? nullptr : found->second.get();
}

void Machine::add_pack(std::unique_ptr<Pack> pack) {
  for (const Row& row : pack->rows())
    for (const std::string& name : row.context) variable(name);
  packs.push_back(std::move(pack));
}

const Row* Machine::find_row(std::string_view name) const {
  for (const auto& pack : packs)
    for (const Row& row : pack->rows())
      if (row.name == name) return &row;
  return nullptr;
}

Function* Machine::keep(std::unique_ptr<Function> function) {
  functions_.push_back(std::move(function));
  return functions_.back().get();
}

Value Machine::evaluate(const Node& node, const Source& source) {
  place_ = {};
  pictures.clear();
  notes.clear();
  trust.clear();
  const Activation activation(*this, nullptr, &source);
  return node.evaluate(*this);
}

std::string_view Machine::text_at(Span span) const {
  return std::string_view(source_->text).substr(span.begin, span.end - span.begin);
}

Value Machine::fail(Span span, std::string_view message) {
  return fail_with(span, mkError(&context, std::string(message).c_str(), 0));
}

Value Machine::fail_because(const Failure& cause, Span span, std::string_view message) {
  const Value error = fail(span, message);
  place_.cause = cause;
  return error;
}

Value Machine::wrong_count(Span span, std::string_view function, std::size_t wanted,
                           std::size_t given) {
  return fail(span,
              fmt::format("{} takes {}, not {}", function, counted(wanted, "argument"), given));
}

Value Machine::stopped(Span span) {
  return fail(span, interrupted == kOutOfTime
                        ? fmt::format("takes longer than the {} s allowed", seconds_allowed)
                        : "interrupted");
}

Value Machine::fail_with(Span span, Anyval* error) {
  if (place_.error != error) place_ = {static_cast<const aError*>(error), source_, span, {}};
  return object_value(error);
}

Value Machine::call(const Function& function, std::span<const Value> arguments, Span span) {
  const std::size_t wanted = function.parameters.size();
  if (arguments.size() != wanted) return wrong_count(span, function.name, wanted, arguments.size());
  if (interrupted) return stopped(span);
  if (stack_is_low()) return fail(span, kStackLimit.message);
  const Activation activation(*this, arguments.data(), function.source.get());
  return function.body->evaluate(*this);
}

void Machine::reclaim(const Value& result, std::size_t since) {
  last_applied_ = nullptr;
  Anyval* const roots[] = {result.object, const_cast<aError*>(place_.error)};
  store.collect(roots, since);
}

namespace {

// What it takes to keep a value, or to look through it.
std::size_t words_of(const Value& v) {
  constexpr std::size_t kRecord = 8;
  if (v.object == nullptr) return 0;
  return kRecord + (is_matrix(v) ? matrix(v)->byte_size / sizeof(double) : 0);
}

}  // namespace

void Machine::assign(Variable& variable, const Value& value) {
  assigned_.push_back(&variable);
  lost_words_ += words_of(variable.value);
  held_words_ += words_of(value);
  variable.value = value;
  variable.defined = true;
  variable.failure = {};
}

void Machine::forget(Variable& variable) {
  assign(variable, {});
  variable.defined = false;
}

void Machine::end_statement() {
  last_applied_ = nullptr;
  pictures.clear();
  notes.clear();
  trust.clear();
  place_ = {};
  try {
    if (lost_words_ > held_words_ / 8) return reclaim_all();
    std::vector<Anyval*> roots;
    for (const Variable* variable : assigned_) roots.push_back(variable->value.object);
    store.collect(roots, kept_);
    kept_ = store.size();
    assigned_.clear();
  } catch (const std::bad_alloc&) {
    // Then a later statement does it.
  }
}

// Reclaims everything that no variable reaches.
void Machine::reclaim_all() {
  std::vector<Anyval*> roots;
  held_words_ = 0;
  for (const auto& [name, variable] : variables_)
    if (variable->defined) {
      held_words_ += words_of(variable->value);
      roots.push_back(variable->value.object);
    }
  store.collect(roots);
  kept_ = store.size();
  assigned_.clear();
  lost_words_ = 0;
}

}  // namespace worksheet
