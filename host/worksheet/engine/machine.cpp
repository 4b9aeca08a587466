#include "host/worksheet/engine/machine.hpp"

#include <algorithm>
#include <array>

#include "fmt/format.h"
#include "host/efiutils/fault_translation.hpp"
#include "host/packs/watched_call.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/engine/stack.hpp"

namespace worksheet {

std::string signature_text(const Function& function) {
  return fmt::format("{}({})", function.name, joined(function.parameters, ", "));
}

// The part of the machine's state that belongs to one call of a worksheet function.
struct Machine::Activation {
  Activation(Machine& m, const Value* parameters, const Source* source, Value* locals = nullptr)
      : machine(m),
        saved_parameters(m.parameters_),
        saved_source(m.source_),
        saved_locals(m.locals_) {
    m.parameters_ = parameters;
    m.source_ = source;
    m.locals_ = locals;
  }
  ~Activation() {
    machine.parameters_ = saved_parameters;
    machine.source_ = saved_source;
    machine.locals_ = saved_locals;
  }
  Machine& machine;
  const Value* saved_parameters;
  const Source* saved_source;
  Value* saved_locals;
};

Machine::Machine() {
  efi::install_fault_translation();
  evaluator.apply_function = [this](Anyval* function, const sCons* arguments) {
    return apply(function, arguments);
  };
  Variable* const origin = variable("ORIGIN");
  origin->value = number_value(0.0);
  origin->defined = true;
  origin->is_origin = true;
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

void Machine::note(std::string text) {
  if (notes.size() < kNoteLimit.most) notes.push_back(std::move(text));
  if (notes.size() == kNoteLimit.most) notes.back() = "further notes are left out";
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
  if (function.local_count > 0) return call_with_locals(function, arguments);
  const Activation activation(*this, arguments.data(), function.source.get());
  return function.body->evaluate(*this);
}

Value Machine::call_with_locals(const Function& function, std::span<const Value> arguments) {
  std::vector<Value> values(arguments.begin(), arguments.end());
  values.resize(values.size() + function.local_count);
  const Activation activation(*this, values.data(), function.source.get(), values.data());
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
  if (value.object != nullptr && !variable.is_listed) {
    assigned_.push_back(&variable);
    variable.is_listed = true;
  }
  if (is_matrix(value)) holders_.add(value.object);
  if (is_matrix(variable.value)) holders_.remove(variable.value.object);
  lost_words_ += words_of(variable.value);
  held_words_ += words_of(value);
  variable.value = value;
  variable.defined = variable.is_assigned = true;
  if (variable.failure.line != 0) variable.failure = {};
  variable.may_be_real = false;
  variable.written = nullptr;
}

void Machine::assign_part_of_joined(Variable& variable, const Value& value) {
  assign(variable, value);
  holders_.lend(value.object);
}

aMatrix* Machine::made_writable(Variable& variable) {
  const aMatrix* const m = matrix(variable.value);
  const bool is_simple = m->re != nullptr && m->leading_dimension == m->rows &&
                         (m->flags & kIsNestedValue) == 0 && store.parts(m).empty();
  if (!is_simple || !holders_.let_write(variable)) {
    assign(variable, object_value(plain_copy(*this, m), variable.value.unit));
    holders_.let_write(variable);
  }
  return matrix(variable.value);
}

void Machine::drop_zero_imaginary_part(Variable& variable) {
  aMatrix* const m = matrix(variable.value);
  variable.may_be_real = false;
  const double* const im = m->im;
  if (im == nullptr || std::any_of(im, im + element_count(m), [](double x) { return x != 0.0; }))
    return;
  ::operator delete(std::exchange(m->im, nullptr));
}

Machine::LoopValue::LoopValue(Machine& machine, const Value& value) : machine_(machine) {
  machine.loop_values_.reserve(machine.loop_values_.size() + 1);
  if (is_matrix(value)) machine.holders_.add(value.object);
  machine.loop_values_.push_back(value.object);
}

Machine::LoopValue::~LoopValue() {
  Anyval* const object = machine_.loop_values_.back();
  if (object != nullptr && object->kind == kMatrixKind) machine_.holders_.remove(object);
  machine_.loop_values_.pop_back();
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
    forget_assigned();
  } catch (const std::bad_alloc&) {
    // Then a later statement does it.
  }
}

void Machine::reclaim_step(std::size_t since, std::span<Variable* const> targets) {
  // Small losses wait, so that a pass of a loop does not look at all variables.
  constexpr std::size_t kSmallLoss = 1u << 12;
  last_applied_ = nullptr;
  if (lost_words_ > held_words_ / 8 + kSmallLoss + variables_.size()) return reclaim_all();
  std::array<Anyval*, kTargetLimit.most> roots;
  std::size_t count = 0;
  for (const Variable* target : targets) roots[count++] = target->value.object;
  store.collect({roots.data(), count}, since);
}

void Machine::forget_assigned() {
  for (Variable* variable : assigned_) variable->is_listed = false;
  assigned_.clear();
}

// Reclaims everything that no variable reaches.
void Machine::reclaim_all() {
  std::vector<Anyval*> roots = loop_values_;
  held_words_ = 0;
  for (const auto& [name, variable] : variables_)
    if (variable->defined) {
      held_words_ += words_of(variable->value);
      roots.push_back(variable->value.object);
    }
  store.collect(roots);
  kept_ = store.size();
  forget_assigned();
  lost_words_ = 0;
}

}  // namespace worksheet
