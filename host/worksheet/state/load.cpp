#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <vector>

#include "fmt/format.h"
#include "host/units/unit.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"
#include "host/worksheet/language/compile.hpp"
#include "host/worksheet/operators/assignment.hpp"
#include "host/worksheet/state/state.hpp"

namespace worksheet {

namespace {

using StateJson = nlohmann::json;

[[noreturn]] void fail(const std::string& what) {
  throw StateError(what);
}

// The text as JSON, no deeper and with no more values than a state has.
StateJson bounded_json(const std::string& text) {
  // A nested value is an object in an array.
  const int deepest = 2 * static_cast<int>(kStateNestingLimit.most) + 8;
  std::size_t count = 0;
  auto check = [&](int depth, StateJson::parse_event_t, const StateJson&) {
    if (depth > deepest) fail(kStateNestingLimit.message);
    if (++count > 2 * kStateElementLimit.most) fail(kStateElementLimit.message);
    return true;
  };
  try {
    return StateJson::parse(text, check);
  } catch (const StateJson::parse_error& error) {
    fail(fmt::format("is no JSON from byte {} on", error.byte));
  } catch (const StateJson::exception&) {
    fail("holds a number that is too large");
  }
}

// The member of that name, which is of the type that `is` tells, if any.
const StateJson& member(const StateJson& object, const char* name,
                        bool (StateJson::*is)() const noexcept = nullptr) {
  const auto found = object.is_object() ? object.find(name) : object.end();
  if (found == object.end() || (is != nullptr && !((*found).*is)()))
    fail(fmt::format("\"{}\" is missing or wrong", name));
  return *found;
}

std::string text_member(const StateJson& object, const char* name) {
  return member(object, name, &StateJson::is_string).get<std::string>();
}

double number_of(const StateJson& json) {
  if (json.is_number()) return json.get<double>();
  const std::string word = json.is_string() ? json.get<std::string>() : "";
  if (word == "nan") return std::numeric_limits<double>::quiet_NaN();
  if (word != "inf" && word != "-inf") fail("a number is missing or wrong");
  return word == "inf" ? HUGE_VAL : -HUGE_VAL;
}

// Makes the values of a machine.
class Maker {
 public:
  explicit Maker(Machine& machine) : machine_(machine) {}

  Value value(const StateJson& json, const std::string& source = "", int line = 0) {
    const std::string kind = text_member(json, "kind");
    Value made = number_value(0.0);
    if (kind == "scalar")
      made = number_value(number_of(member(json, "re")), number_of(member(json, "im")));
    else if (kind == "matrix")
      made = object_value(matrix(json));
    else if (kind == "string")
      made = object_value(checked(machine_.store.new_string(text_member(json, "text").c_str())));
    else if (kind == "function")
      made = function(source, line);
    else if (kind == "none")
      made = object_value(&kNoValue);
    else
      fail(fmt::format("the kind \"{}\" is no value", kind.substr(0, 20)));
    if (json.contains("unit")) made.unit = unit(json);
    return made;
  }

 private:
  template <class T>
  static T* checked(T* made) {
    if (made == nullptr) throw std::bad_alloc();
    return made;
  }

  static const Unit* unit(const StateJson& json) {
    const std::string name = text_member(json, "unit");
    try {
      if (name.size() <= kUnitLimit.most) return parse_unit(name);
    } catch (const std::runtime_error&) {
    }
    fail(fmt::format("\"{}\" is no unit", name.substr(0, 40)));
  }

  static std::int64_t extent(const StateJson& json, const char* name) {
    const StateJson& extent = member(json, name, &StateJson::is_number_integer);
    if (extent < 0 || extent > std::numeric_limits<std::int32_t>::max())
      fail(fmt::format("\"{}\" is missing or wrong", name));
    return extent.get<std::int64_t>();
  }

  aMatrix* matrix(const StateJson& json) {
    if (json.contains("elided")) fail("a matrix has been left out");
    const std::int64_t rows = extent(json, "rows"), cols = extent(json, "cols");
    constexpr std::int64_t kMostElements =
        std::numeric_limits<std::uint32_t>::max() / sizeof(double);
    if (rows * cols > kMostElements) fail("a matrix is too large");
    bool holds_nested = false;
    Part re = part(member(json, "re"), rows * cols, &holds_nested);
    Part im = part(member(json, "im"), rows * cols, nullptr);
    aMatrix* const made = checked(machine_.store.new_matrix(
        static_cast<int>(rows), static_cast<int>(cols), re.get(), im.get(),
        static_cast<unsigned>(static_cast<std::size_t>(rows * cols) * sizeof(double))));
    re.release();
    im.release();
    if (holds_nested) made->flags |= kHoldsNested;
    if (json.contains("parts")) set_parts(made, member(json, "parts", &StateJson::is_array));
    return made;
  }

  // An array of elements; null for null. Values within it are allowed where they are noted.
  Part part(const StateJson& json, std::int64_t count, bool* holds_nested) {
    if (json.is_null()) return nullptr;
    if (!json.is_array() || static_cast<std::int64_t>(json.size()) != count)
      fail("an array has another length than its matrix");
    Part elements(
        static_cast<double*>(::operator new(static_cast<std::size_t>(count) * sizeof(double))));
    for (std::size_t k = 0; k < json.size(); ++k) {
      const bool is_value = holds_nested != nullptr && json[k].is_object();
      elements[k] = is_value ? efi::nested_element(nested_object(json[k])) : number_of(json[k]);
      if (is_value) *holds_nested = true;
    }
    return elements;
  }

  Anyval* nested_object(const StateJson& json) {
    const Value inner = value(json);
    if (inner.unit != nullptr || is_none(inner)) fail("a nested value is no value");
    if (is_number(inner)) return checked(machine_.store.new_scalar(inner.re, inner.im));
    if (is_matrix(inner)) worksheet::matrix(inner)->flags |= kIsNestedValue;
    return inner.object;
  }

  void set_parts(aMatrix* joined, const StateJson& list) {
    std::vector<aMatrix*> parts;
    for (const StateJson& one : list) {
      const Value made = value(one);
      if (!is_matrix(made) || parts.size() == efi::Store::kMostParts) fail("\"parts\" is wrong");
      parts.push_back(worksheet::matrix(made));
    }
    if (!machine_.store.set_parts(joined, parts)) throw std::bad_alloc();
  }

  Value function(const std::string& text, int line) {
    if (text.size() > kStatementLimit.most) fail(kStatementLimit.message);
    Source source;
    source.text = text;
    source.line = line;
    try {
      Statement statement = compile(source, machine_);
      if (statement.form == Statement::Form::definition)
        return object_value(
            checked(machine_.store.new_function(machine_.keep(std::move(statement.function)))));
    } catch (const SyntaxError&) {
    }
    fail("the source of a function is no definition");
  }

  Machine& machine_;
};

// The variable of that name. The language's own reader tells what is a name.
Variable& variable_of(Machine& machine, const std::string& name) {
  Source source;
  source.text = name + " = 0";
  try {
    const Statement statement = compile(source, machine);
    if (statement.form == Statement::Form::assignment && statement.targets.size() == 1 &&
        statement.targets[0]->name == name)
      return *statement.targets[0];
  } catch (const SyntaxError&) {
  }
  fail(fmt::format("\"{}\" is no name", name.substr(0, 40)));
}

Unit::Origin origin_of(const std::string& word) {
  if (word == kCalculatedOrigin) return Unit::Origin::calculated;
  if (word == kAskedOrigin) return Unit::Origin::asked;
  fail("the origin of its unit is not known here");
}

// Whether the variable has that number. A state holds TOL even if the worksheet never set it.
bool is_known(const Variable& variable, const Value& value) {
  const Value& old = variable.value;
  return variable.defined && is_number(old) && is_number(value) && old.unit == value.unit &&
         old.re == value.re && old.im == value.im;
}

void load_statement(Machine& machine, const StateJson& statement, const StateJson& origins) {
  const std::string name = text_member(statement, "name");
  Variable& variable = variable_of(machine, name);
  try {
    const auto line = member(statement, "line", &StateJson::is_number_integer).get<std::int64_t>();
    Value value = Maker(machine).value(member(statement, "value", &StateJson::is_object),
                                       text_member(statement, "source"),
                                       line > 0 && line < 1 << 30 ? static_cast<int>(line) : 1);
    if (value.unit != nullptr && origins.contains(name))
      value.unit = unit_of(value.unit->factors(), origin_of(text_member(origins, name.c_str())));
    if (const char* reason = assignment_objection(variable, value)) fail(reason);
    if (!is_known(variable, value)) machine.assign(variable, value);
  } catch (const StateError& error) {
    fail(fmt::format("{}: {}", name, error.what()));
  }
}

}  // namespace

void load_state(Machine& machine, const std::string& text) {
  if (text.size() > kStateLimit.most) fail(kStateLimit.message);
  const StateJson state = bounded_json(text);
  if (!state.is_object() || !state.contains("worksheet_state")) fail("is no state of a worksheet");
  if (state["worksheet_state"] != 1) fail("is the state of a newer program");
  const StateJson& origins = member(state, "unit_origins", &StateJson::is_object);
  for (const StateJson& statement : member(state, "variables", &StateJson::is_array))
    load_statement(machine, statement, origins);
}

}  // namespace worksheet
