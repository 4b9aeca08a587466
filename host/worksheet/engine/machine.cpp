#include "host/worksheet/engine/machine.hpp"

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <utility>

#include "fmt/format.h"
#include "host/efiutils/fault_translation.hpp"
#include "host/efiutils/watch.hpp"
#include "host/packs/unit_rule.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/engine/node.hpp"
#include "pack/frame/fp_control.hpp"

namespace worksheet {

Anyval kNoValue = {-1};

namespace {

constexpr double kDefaultTolerance = 1e-9;

// The most stack that an evaluation may take, if the system grants it; a quarter of what there is
// stays for the functions of packs.
constexpr std::size_t kUsualStack = 8u << 20;

std::size_t stack_budget() {
  rlimit limit;
  if (getrlimit(RLIMIT_STACK, &limit) != 0) return kUsualStack / 2;
  return std::min<std::size_t>(limit.rlim_cur, kUsualStack) / 4 * 3;
}

// Puts masked exceptions in force while worksheet code runs inside a pack's function.
struct PlainArithmetic {
#if MATRIX_HAS_MXCSR
  PlainArithmetic() : saved(_mm_getcsr()) {
    if ((saved & matrix_pack::kAllMasked) != matrix_pack::kAllMasked)
      _mm_setcsr(matrix_pack::kAllMasked);
  }
  ~PlainArithmetic() {
    if ((saved & matrix_pack::kAllMasked) != matrix_pack::kAllMasked) _mm_setcsr(saved);
  }
  std::uint32_t saved;
#endif
};

Value in_plain_numbers(const Value& v) {
  return is_number(v) && v.unit != nullptr
             ? number_value(number(v) * conversion(v.unit, nullptr).value_or(1.0))
             : v;
}

const char* plural(std::size_t count) {
  return count == 1 ? "" : "s";
}

}  // namespace

const char* kind_name(const Value& v) {
  if (is_number(v)) return "a number";
  if (is_none(v)) return "nothing";
  if (is_matrix(v)) return "a matrix";
  if (is_text(v)) return "text";
  if (is_function(v)) return "a function";
  return is_error(v) ? "an error" : "a value of an unknown kind";
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
  if (slot == nullptr) slot = std::make_unique<Variable>(Variable{std::string(name), {}, false});
  return slot.get();
}

void Machine::add_pack(std::unique_ptr<Pack> pack) {
  for (Row& row : pack->rows())
    for (const std::string& name : row.context) row.variables.push_back(variable(name));
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
  stack_limit_ = static_cast<const char*>(__builtin_frame_address(0)) - stack_budget();
  place_ = {};
  pictures.clear();
  const Activation activation(*this, nullptr, &source);
  return node.evaluate(*this);
}

std::string_view Machine::text_at(Span span) const {
  return std::string_view(source_->text).substr(span.begin, span.end - span.begin);
}

Value Machine::fail(Span span, std::string_view message) {
  return fail_with(span, mkError(&context, std::string(message).c_str(), 0));
}

Value Machine::fail_with(Span span, Anyval* error) {
  if (place_.error != error) place_ = {static_cast<const aError*>(error), source_, span};
  return object_value(error);
}

bool Machine::deeply_nested() const {
  return static_cast<const char*>(__builtin_frame_address(0)) < stack_limit_;
}

Value Machine::call(const Function& function, std::span<const Value> arguments, Span span) {
  const std::size_t wanted = function.parameters.size();
  if (arguments.size() != wanted)
    return fail(span, fmt::format("{} takes {} argument{}, not {}", function.name, wanted,
                                  plural(wanted), arguments.size()));
  if (interrupted) return fail(span, "interrupted");
  if (deeply_nested()) return fail(span, "calls are nested too deeply");
  const Activation activation(*this, arguments.data(), function.source.get());
  return function.body->evaluate(*this);
}

Anyval* Machine::apply(Anyval* function, const sCons* list) {
  forget_last_applied();
  const PlainArithmetic plain;
  if (function == nullptr || function->kind != kFunctionKind)
    return mkError(&context, "must be function", 0);
  std::array<Value, kMostArguments> arguments;
  std::size_t count = 0;
  for (; list != nullptr && count < kMostArguments; list = list->cdr)
    arguments[count++] = unboxed(static_cast<Anyval*>(const_cast<void*>(list->car)));
  try {
    return applied(function_of(object_value(function)), {arguments.data(), count});
  } catch (const std::bad_alloc&) {
    return sError_OutOfMemory;
  }
}

// A pack that needs an earlier value of `apply` for longer holds it in a word of its frame.
void Machine::forget_last_applied() {
  if (last_applied_ == nullptr) return;
  const auto& words = evaluator.words();
  if (std::none_of(words.begin(), words.end(), [&](Anyval** w) { return *w == last_applied_; }))
    store.drop_newest(last_applied_);
  last_applied_ = nullptr;
}

Anyval* Machine::applied(const Function& function, std::span<const Value> arguments) {
  const std::size_t since = store.size();
  const Value value = call(function, arguments, pack_call_);
  collect(value, since);
  if (!is_dimensionless(value.unit))
    return fail(pack_call_, fmt::format("{} gives a value in {}; a plain one is needed",
                                        function.name, unit_text(value.unit)))
        .object;
  Anyval* const result = boxed(in_plain_numbers(value));
  if (result == nullptr) return sError_OutOfMemory;
  if (is_number(value)) last_applied_ = result;
  return result;
}

Anyval* Machine::boxed(const Value& value) {
  return is_number(value) ? store.new_scalar(value.re, value.im) : value.object;
}

Value Machine::unboxed(Anyval* object) const {
  if (object->kind != kScalarKind) return object_value(object);
  const auto* const scalar = static_cast<const aComplex*>(object);
  return number_value(scalar->re, scalar->im);
}

Value Machine::nested(double element) const {
  return unboxed(efi::nested_value(element));
}

Value Machine::call(const Row& row, std::span<const Value> arguments, Span span,
                    std::span<const Span> spans) {
  if (arguments.size() != row.argument_count)
    return fail(span, fmt::format("{} takes {} argument{}, not {}", row.name, row.argument_count,
                                  plural(row.argument_count), arguments.size()));
  for (const Value& value : arguments)
    if (value.unit != nullptr) return call_with_units(row, arguments, span, spans);
  return call_plain(row, arguments, span, spans);
}

Value Machine::call_with_units(const Row& row, std::span<const Value> arguments, Span span,
                               std::span<const Span> spans) {
  std::vector<const Unit*> units;
  for (const Value& value : arguments) units.push_back(value.unit);
  UnitRuling ruling;
  try {
    ruling = apply_unit_rule(row.unit_rule(), units);
  } catch (const UnitMismatch& mismatch) {
    return fail(spans[mismatch.argument], fmt::format("{} {}", row.name, mismatch.what()));
  } catch (const UnitRuleError& error) {
    return fail(span, fmt::format("{}: {}", row.name, error.what()));
  }
  std::vector<Value> plain;
  for (std::size_t k = 0; k < arguments.size(); ++k)
    plain.push_back(without_unit(scaled(*this, arguments[k], ruling.factors[k])));
  const Value result = call_plain(row, plain, span, spans);
  if (!is_number(result) && !is_matrix(result)) return result;
  return with_unit(scaled(*this, result, ruling.result.factor), ruling.result.unit);
}

Value Machine::call_plain(const Row& row, std::span<const Value> arguments, Span span,
                          std::span<const Span> spans) {
  std::vector<Anyval*> boxes;
  for (const Value& value : arguments) boxes.push_back(boxed(value));
  for (const Variable* variable : row.variables) {
    if (!variable->defined)
      return fail(span, fmt::format("{} needs the variable {}", row.name, variable->name));
    if (variable->value.unit != nullptr)
      return fail(span, fmt::format("{} needs {} without a unit", row.name, variable->name));
    boxes.push_back(boxed(variable->value));
  }
  if (std::find(boxes.begin(), boxes.end(), nullptr) != boxes.end()) return out_of_memory(span);
  return call_pack(
      row.name, [&] { return call_handler(row.entry->handler, &context, boxes); }, boxes, span,
      spans);
}

Value Machine::call_pack(const std::string& name, const std::function<Anyval*()>& entry,
                         std::span<Anyval* const> boxes, Span span, std::span<const Span> spans) {
  const Span outer = std::exchange(pack_call_, span);
  efi::PackWatch watch(store, evaluator, boxes, care);
  Anyval* result = nullptr;
  bool threw = false;
  try {
    result = entry();
  } catch (...) {
    threw = true;
  }
  const std::string verdict = watch.verdict(result);
  pack_call_ = outer;
  last_applied_ = nullptr;
  if (threw) return fail(span, name + ": the pack let an exception escape");
  if (!verdict.empty()) return fail(span, fmt::format("{}: the pack {}", name, verdict));
  if (result == nullptr) {
    // A matrix without part arrays has no elements to work on: packs may answer with nothing.
    const bool lean = std::any_of(boxes.begin(), boxes.end(), [](const Anyval* box) {
      const auto* const m = static_cast<const aMatrix*>(box);
      return box->kind == kMatrixKind && m->re == nullptr && m->im == nullptr;
    });
    return lean ? object_value(&kNoValue) : fail(span, name + ": the pack gave no value");
  }
  if (result->kind != kErrorKind) return unboxed(result);
  const auto* const error = static_cast<const aError*>(result);
  const auto arg = static_cast<std::size_t>(error->arg);
  return fail_with(arg >= 1 && arg <= spans.size() ? spans[arg - 1] : span, result);
}

void Machine::collect(const Value& result, std::size_t since) {
  if (store.size() == since) return;
  last_applied_ = nullptr;
  Anyval* const roots[] = {result.object, const_cast<aError*>(place_.error)};
  store.collect(roots, since);
}

void Machine::assign(Variable& variable, const Value& value) {
  replaced_ = replaced_ || variable.value.object != nullptr;
  variable.value = value;
  variable.defined = true;
}

void Machine::collect_all() {
  last_applied_ = nullptr;
  pictures.clear();
  place_ = {};
  // The variables may be many: they are looked through only where there may be something to find.
  if (store.size() == kept_ && !replaced_) return;
  std::vector<Anyval*> roots;
  for (const auto& [name, variable] : variables_)
    if (variable->defined) roots.push_back(variable->value.object);
  store.collect(roots);
  kept_ = store.size();
  replaced_ = false;
}

}  // namespace worksheet
