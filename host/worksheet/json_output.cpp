#include "host/worksheet/json_output.hpp"

#include <cmath>

#include "host/efiutils/store.hpp"
#include "host/worksheet/unit.hpp"

namespace worksheet {

namespace {

Json number_json(double x) {
  if (std::isnan(x)) return "nan";
  if (std::isinf(x)) return x > 0.0 ? "inf" : "-inf";
  return x;
}

Json part_json(const Machine& machine, const aMatrix* m, const double* part) {
  if (part == nullptr) return nullptr;
  Json elements = Json::array();
  for (std::ptrdiff_t k = 0; k < element_count(m); ++k) {
    if (efi::is_nested_element(part[k]))
      elements.push_back(value_json(machine, machine.nested(part[k])));
    else
      elements.push_back(number_json(part[k]));
  }
  return elements;
}

Json matrix_json(const Machine& machine, const Value& value) {
  const aMatrix* const m = matrix(value);
  Json json = {{"kind", "matrix"},
               {"rows", m->rows},
               {"cols", m->cols},
               {"re", part_json(machine, m, m->re)},
               {"im", part_json(machine, m, m->im)}};
  const auto parts = machine.store.parts(m);
  if (!parts.empty()) {
    Json list = Json::array();
    for (aMatrix* part : parts) list.push_back(value_json(machine, object_value(part, value.unit)));
    json["parts"] = list;
  }
  return json;
}

Json error_json(const Machine& machine, const aError* error) {
  return {{"kind", "error"},
          {"message", error->message->text},
          {"mark", error->mark},
          {"arg", error->arg},
          {"value", error->value == nullptr ? Json(nullptr)
                                            : value_json(machine, machine.unboxed(error->value))}};
}

Json plain_json(const Machine& machine, const Value& value) {
  if (is_number(value))
    return {{"kind", "scalar"}, {"re", number_json(value.re)}, {"im", number_json(value.im)}};
  if (is_matrix(value)) return matrix_json(machine, value);
  if (is_text(value)) return {{"kind", "string"}, {"text", text(value)}};
  if (is_error(value)) return error_json(machine, static_cast<const aError*>(value.object));
  if (has_kind(value, kFunctionKind)) {
    const Function& function = function_of(value);
    return {{"kind", "function"}, {"name", function.name}, {"parameters", function.parameters}};
  }
  return {{"kind", "none"}};
}

Json names_json(const std::vector<std::string>& names) {
  return names.size() == 1 ? Json(names[0]) : Json(names);
}

}  // namespace

Json value_json(const Machine& machine, const Value& value) {
  Json json = plain_json(machine, value);
  if (value.unit != nullptr) json["unit"] = value.unit->name();
  return json;
}

Json outcome_json(const Machine& machine, const Outcome& outcome) {
  Json json = {{"line", outcome.line}, {"source", outcome.source->text}};
  if (!outcome.names.empty()) json["name"] = names_json(outcome.names);
  if (outcome.is_syntax_error())
    json["value"] = {
        {"kind", "syntax"}, {"message", outcome.syntax_message}, {"column", outcome.column}};
  else
    json["value"] = value_json(machine, outcome.value);
  return json;
}

std::string json_line(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace worksheet
