// Calls of packs' functions: units by the row's rule, the context values, the watch over the pack;
// and the way back, when a pack applies a function of the worksheet.
#include <algorithm>
#include <array>
#include <utility>

#include "fmt/format.h"
#include "host/packs/unit_rule.hpp"
#include "host/packs/watched_call.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "pack/frame/fp_control.hpp"

namespace worksheet {

namespace {

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

// The functions of packs that need no elements; others are not given a matrix without any.
bool takes_empty(const std::string& name) {
  constexpr std::string_view kNames[] = {"rows", "cols", "length", "last"};
  return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames);
}

bool is_empty(const Value& v) {
  return is_matrix(v) && element_count(matrix(v)) == 0;
}

}  // namespace

Value Machine::call(const Row& row, const Call& call) {
  if (interrupted) return stopped(call.span);
  if (call.arguments.size() != row.argument_count)
    return wrong_count(call.span, row.name, row.argument_count, call.arguments.size());
  for (const Value& value : call.arguments)
    if (value.unit != nullptr) return call_with_units(row, call);
  return call_plain(row, call);
}

Value Machine::call_with_units(const Row& row, const Call& call) {
  std::vector<UnitArgument> units;
  for (const Value& value : call.arguments) units.push_back({value.unit, needs_no_unit(value)});
  UnitRuling ruling;
  try {
    ruling = apply_unit_rule(row.unit_rule(), units);
  } catch (const UnitMismatch& mismatch) {
    return fail(call.places[mismatch.argument], fmt::format("{} {}", row.name, mismatch.what()));
  } catch (const UnitRuleError& error) {
    return fail(call.span, fmt::format("{}: {}", row.name, error.what()));
  }
  std::vector<Value> plain;
  for (std::size_t k = 0; k < call.arguments.size(); ++k)
    plain.push_back(without_unit(scaled(*this, call.arguments[k], ruling.factors[k])));
  const Value result = call_plain(row, {plain, call.span, call.places});
  if (!is_number(result) && !is_matrix(result)) return result;
  return with_unit(scaled(*this, result, ruling.result.factor), ruling.result.unit);
}

Value Machine::call_plain(const Row& row, const Call& call) {
  const auto empty = std::find_if(call.arguments.begin(), call.arguments.end(), is_empty);
  if (empty != call.arguments.end() && !takes_empty(row.name))
    return fail(call.places[static_cast<std::size_t>(empty - call.arguments.begin())],
                "must have elements");
  std::vector<Anyval*> boxes;
  for (const Value& value : call.arguments) boxes.push_back(boxed(value));
  for (const std::string& name : row.context) {
    const Variable* const variable = find_variable(name);
    if (variable == nullptr)
      return fail(call.span, fmt::format("{} needs the variable {}", row.name, name));
    if (variable->value.unit != nullptr)
      return fail(call.span, fmt::format("{} needs {} without a unit", row.name, name));
    boxes.push_back(boxed(variable->value));
  }
  if (std::find(boxes.begin(), boxes.end(), nullptr) != boxes.end())
    return out_of_memory(call.span);
  const auto entry = [&](std::span<Anyval* const> values) {
    return call_handler(row.entry->handler, &context, values);
  };
  const Value result = call_pack(
      row.name, [&] { return entry(boxes); }, boxes, call);
  audit_call(audit::find_check(row), result, boxes, entry, call.span);
  return result;
}

Value Machine::call_pack(const std::string& name, const std::function<Anyval*()>& entry,
                         std::span<Anyval* const> boxes, const Call& call) {
  const Span outer = std::exchange(pack_call_, call.span);
  ++pack_calls_;
  const CallOutcome outcome = call_watched(entry, boxes, store, evaluator, care);
  pack_call_ = outer;
  --pack_calls_;
  last_applied_ = nullptr;
  if (outcome.left) return stopped(call.span);
  if (!outcome.complaint.empty())
    return fail(call.span, fmt::format("{}: {}", name, outcome.complaint));
  Anyval* const result = outcome.result;
  if (result == nullptr) return object_value(&kNoValue);
  if (result->kind != kErrorKind) return unboxed(result);
  const auto* const error = static_cast<const aError*>(result);
  const auto arg = static_cast<std::size_t>(error->arg);
  return fail_with(arg >= 1 && arg <= call.places.size() ? call.places[arg - 1] : call.span,
                   result);
}

void Machine::audit_call(const audit::Check* check, const Value& result,
                         std::span<Anyval* const> boxes,
                         const std::function<Anyval*(std::span<Anyval* const>)>& entry, Span span) {
  if (check == nullptr || !trust.is_on() || pack_calls_ > 0 || interrupted || is_none(result))
    return;
  if (is_error(result) && trust.question() != nullptr) return;
  const auto again = [&](std::span<Anyval* const> values) -> Anyval* {
    const CallOutcome outcome =
        call_watched([&] { return entry(values); }, values, store, evaluator, efi::Care::records);
    return outcome.complaint.empty() && !outcome.left ? outcome.result : nullptr;
  };
  const Variable* const tolerance = find_variable("TOL");
  const bool chosen = tolerance != nullptr && tolerance->is_assigned;
  const std::size_t since = store.size();
  if (Anyval* const value = boxed(result)) {
    const audit::Request request = {boxes,           value,  store,       again,
                                    trust.is_full(), chosen, &interrupted};
    const auto finding =
        is_error(result) ? audit::hint(*check, request) : audit::run(*check, request);
    if (finding) trust.add(*finding, source_, span);
  }
  store.collect({}, since);
}

// --- What packs ask back ---

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
  if (!conversion(value.unit, nullptr))
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

}  // namespace worksheet
