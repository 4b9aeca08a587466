#include "host/worksheet/output/json_output.hpp"

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/efiutils/catalogue.hpp"
#include "host/packs/unit.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/output/display_options.hpp"
#include "host/worksheet/output/help_text.hpp"

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
  explicit ValueWriter(const efi::Store& store) : store_(store) {}

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
    const auto parts = store_.parts(m);
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
    Json json = value(worksheet::nested(element));
    --depth_;
    return json;
  }

  Json error(const aError* e) {
    return error_json(e->message->text, e->mark, e->arg,
                      e->value == nullptr ? Json(nullptr) : value(unboxed(e->value)));
  }

  static Json error_json(const char* message, int mark, int arg, const Json& carried) {
    return {
        {"kind", "error"}, {"message", message}, {"mark", mark}, {"arg", arg}, {"value", carried}};
  }

  const efi::Store& store_;
  int depth_ = 0;
  int nested_values_ = 0;
};

Json names_json(const std::vector<std::string>& names) {
  return names.size() == 1 ? Json(names[0]) : Json(names);
}

// Text of one line, without the newline; what is no UTF-8 is mended.
std::string line_of(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

Json outcome_json(const Outcome& outcome) {
  Json json = roomy_object();
  json["line"] = outcome.line;
  json["source"] = outcome.source->text;
  if (!outcome.names.empty()) json["name"] = names_json(outcome.names);
  if (outcome.is_syntax_error())
    json["value"] = {
        {"kind", "syntax"}, {"message", outcome.syntax_message}, {"column", outcome.column}};
  else if (outcome.help)
    json["value"] = {{"kind", "string"},
                     {"text", help_text(*outcome.help, DisplayOptions().width)}};
  else
    json["value"] = ValueWriter(*outcome.store).value(outcome.value);
  for (const Drawn& drawn : outcome.pictures)
    json["pictures"].push_back(drawn.file.empty() ? Json(nullptr) : Json(drawn.file));
  if (!outcome.notes.empty()) json["notes"] = outcome.notes;
  return json;
}

std::string outcome_line(const Outcome& outcome) {
  return line_of(outcome_json(outcome));
}

std::string functions_json(const Machine& machine) {
  const std::vector<ReferenceEntry> reference = whole_reference(machine);
  std::string text;
  for (const auto& pack : machine.packs)
    for (const Row& row : pack->rows()) {
      const char* const rule = row.unit_rule();
      const ReferenceEntry* const entry = find_entry(reference, row.name);
      const Json json = {
          {"name", row.name},           {"arguments", argument_kinds(row)},
          {"result", result_kind(row)}, {"context", row.context},
          {"flags", row.entry->flags},  {"rule", rule == nullptr ? Json(nullptr) : Json(rule)},
          {"pack", pack->path()},       {"group", entry->group},
          {"heading", entry->heading},  {"summary", entry->summary}};
      text += line_of(json) + "\n";
    }
  return text;
}

std::string packs_json() {
  std::string text;
  std::error_code ignored;
  for (const efi::CatalogueEntry& entry : efi::read_catalogue()) {
    const Json json = {{"id", entry.id},
                       {"path", entry.path},
                       {"exists", std::filesystem::exists(entry.path, ignored)}};
    text += line_of(json) + "\n";
  }
  return text;
}

}  // namespace worksheet
