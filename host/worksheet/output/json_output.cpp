#include "host/worksheet/output/json_output.hpp"

#include <cmath>

#include "host/efiutils/store.hpp"
#include "host/packs/unit.hpp"
#include "host/worksheet/help/reference.hpp"

namespace worksheet {

namespace {

Json number_json(double x) {
  if (std::isnan(x)) return "nan";
  if (std::isinf(x)) return x > 0.0 ? "inf" : "-inf";
  return x;
}

// An object with room for its members: growing would copy those that are there, with all they hold.
Json roomy_object() {
  Json::object_t members;
  members.reserve(8);
  return members;
}

// Nested values may be shared, and shared values may hold shared ones: what is short to write down
// in a worksheet may be endless to print. Beyond these bounds an error stands in for a value.
constexpr int kMostDepth = 200;
constexpr int kMostNestedValues = 200000;

class ValueWriter {
 public:
  explicit ValueWriter(const Machine& machine) : machine_(machine) {}

  Json value(const Value& v) {
    Json json = without_unit(v);
    if (v.unit != nullptr) json["unit"] = v.unit->name();
    return json;
  }

 private:
  Json without_unit(const Value& v) {
    if (is_number(v))
      return {{"kind", "scalar"}, {"re", number_json(v.re)}, {"im", number_json(v.im)}};
    if (is_matrix(v)) return matrix(v);
    if (is_text(v)) return {{"kind", "string"}, {"text", text(v)}};
    if (is_error(v)) return error(static_cast<const aError*>(v.object));
    if (has_kind(v, kFunctionKind)) {
      const Function& function = function_of(v);
      return {{"kind", "function"}, {"name", function.name}, {"parameters", function.parameters}};
    }
    return {{"kind", "none"}};
  }

  Json matrix(const Value& v) {
    const aMatrix* const m = worksheet::matrix(v);
    Json json = roomy_object();
    json["kind"] = "matrix";
    json["rows"] = m->rows;
    json["cols"] = m->cols;
    json["re"] = part(m, m->re);
    json["im"] = part(m, m->im);
    const auto parts = machine_.store.parts(m);
    if (!parts.empty()) {
      Json& list = json["parts"] = Json::array();
      for (aMatrix* one : parts) list.push_back(value(object_value(one, v.unit)));
    }
    return json;
  }

  Json part(const aMatrix* m, const double* part) {
    if (part == nullptr) return nullptr;
    Json elements = Json::array();
    for (std::ptrdiff_t k = 0; k < element_count(m); ++k)
      elements.push_back(efi::is_nested_element(part[k]) ? nested(part[k]) : number_json(part[k]));
    return elements;
  }

  Json nested(double element) {
    if (depth_ == kMostDepth || ++nested_values_ > kMostNestedValues)
      return error_json("nested too deeply to be shown", 0, 0, nullptr);
    ++depth_;
    Json json = value(machine_.nested(element));
    --depth_;
    return json;
  }

  Json error(const aError* e) {
    return error_json(e->message->text, e->mark, e->arg,
                      e->value == nullptr ? Json(nullptr) : value(machine_.unboxed(e->value)));
  }

  static Json error_json(const char* message, int mark, int arg, const Json& carried) {
    return {
        {"kind", "error"}, {"message", message}, {"mark", mark}, {"arg", arg}, {"value", carried}};
  }

  const Machine& machine_;
  int depth_ = 0;
  int nested_values_ = 0;
};

Json names_json(const std::vector<std::string>& names) {
  return names.size() == 1 ? Json(names[0]) : Json(names);
}

}  // namespace

Json value_json(const Machine& machine, const Value& value) {
  return ValueWriter(machine).value(value);
}

Json outcome_json(const Machine& machine, const Outcome& outcome) {
  Json json = roomy_object();
  json["line"] = outcome.line;
  json["source"] = outcome.source->text;
  if (!outcome.names.empty()) json["name"] = names_json(outcome.names);
  if (outcome.is_syntax_error())
    json["value"] = {
        {"kind", "syntax"}, {"message", outcome.syntax_message}, {"column", outcome.column}};
  else if (outcome.help && !outcome.failed())
    json["value"] = {{"kind", "string"}, {"text", help_text(machine, *outcome.help)}};
  else
    json["value"] = value_json(machine, outcome.value);
  for (const Drawn& drawn : machine.pictures)
    json["pictures"].push_back(drawn.file.empty() ? Json(nullptr) : Json(drawn.file));
  return json;
}

std::string json_line(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace worksheet
