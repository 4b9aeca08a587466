#include "host/worksheet/output/json_output.hpp"

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/efiutils/catalogue.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/units/unit.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/output/display_options.hpp"
#include "host/worksheet/output/help_text.hpp"
#include "host/worksheet/output/json_writer.hpp"
#include "host/worksheet/output/printed_size.hpp"

namespace worksheet {

namespace {

using Json = nlohmann::ordered_json;

class ValueWriter {
 public:
  ValueWriter(std::ostream& out, const efi::Store& store) : json_(out), store_(store) {}

  void outcome(const Outcome& outcome, bool all);

 private:
  void value(const Value& v, std::size_t depth);
  void matrix(const Value& v, std::size_t depth);
  void part(const aMatrix* m, const double* part, std::size_t depth);
  void error(const aError* e, std::size_t depth);
  void strings(const std::vector<std::string>& texts);
  void pictures(const std::vector<Drawn>& pictures);
  void trust(const std::vector<Trust>& trust);
  void variables(const std::vector<const Variable*>& variables);

  // Writes `before`, which is JSON, and the text as a string.
  void named(std::string_view before, std::string_view text) {
    json_.raw(before);
    json_.string(text);
  }

  JsonWriter json_;
  const efi::Store& store_;
  bool elided_ = false;  // Whether matrices are written without their elements.
};

void ValueWriter::value(const Value& v, std::size_t depth) {
  if (is_number(v)) {
    json_.raw(R"({"kind":"scalar","re":)");
    json_.number(v.re);
    json_.raw(R"(,"im":)");
    json_.number(v.im);
  } else if (is_matrix(v)) {
    matrix(v, depth);
  } else if (is_text(v)) {
    named(R"({"kind":"string","text":)", text(v));
  } else if (is_error(v)) {
    error(static_cast<const aError*>(v.object), depth);
  } else if (has_kind(v, kFunctionKind)) {
    named(R"({"kind":"function","name":)", function_of(v).name);
    json_.raw(R"(,"parameters":)");
    strings(function_of(v).parameters);
  } else {
    json_.raw(R"({"kind":"none")");
  }
  if (v.unit != nullptr) named(R"(,"unit":)", v.unit->name());
  json_.raw("}");
}

void ValueWriter::matrix(const Value& v, std::size_t depth) {
  const aMatrix* const m = worksheet::matrix(v);
  json_.raw(R"({"kind":"matrix","rows":)");
  json_.integer(m->rows);
  json_.raw(R"(,"cols":)");
  json_.integer(m->cols);
  if (elided_ || is_too_deep(depth)) {
    json_.raw(R"(,"re":null,"im":null,"elided":true)");
  } else {
    json_.raw(R"(,"re":)");
    part(m, m->re, depth);
    json_.raw(R"(,"im":)");
    part(m, m->im, depth);
  }
  const auto parts = store_.parts(m);
  for (std::size_t k = 0; k < parts.size(); ++k) {
    json_.raw(k == 0 ? R"(,"parts":[)" : ",");
    value(object_value(parts[k], v.unit), depth);
  }
  if (!parts.empty()) json_.raw("]");
}

void ValueWriter::part(const aMatrix* m, const double* part, std::size_t depth) {
  if (part == nullptr) return json_.raw("null");
  json_.raw("[");
  for (std::ptrdiff_t k = 0; k < element_count(m); ++k) {
    if (k > 0) json_.raw(",");
    if (efi::is_nested_element(part[k]))
      value(nested(part[k]), depth + 1);
    else
      json_.number(part[k]);
    if (json_.is_refused()) return;
  }
  json_.raw("]");
}

void ValueWriter::error(const aError* e, std::size_t depth) {
  named(R"({"kind":"error","message":)", e->message->text);
  json_.raw(R"(,"mark":)");
  json_.integer(e->mark);
  json_.raw(R"(,"arg":)");
  json_.integer(e->arg);
  json_.raw(R"(,"value":)");
  if (e->value == nullptr)
    json_.raw("null");
  else
    value(unboxed(e->value), depth + 1);
}

void ValueWriter::strings(const std::vector<std::string>& texts) {
  json_.raw("[");
  for (const std::string& text : texts) named(&text == &texts.front() ? "" : ",", text);
  json_.raw("]");
}

void ValueWriter::pictures(const std::vector<Drawn>& pictures) {
  json_.raw(R"(,"pictures":[)");
  for (const Drawn& drawn : pictures) {
    if (&drawn != &pictures.front()) json_.raw(",");
    if (drawn.file.empty())
      json_.raw("null");
    else
      json_.string(drawn.file);
  }
  json_.raw("]");
}

void ValueWriter::trust(const std::vector<Trust>& trust) {
  static constexpr const char* kLevels[] = {"ok", "note", "warning"};
  json_.raw(R"(,"trust":[)");
  for (const Trust& one : trust) {
    const audit::Finding& finding = one.finding;
    named(&one == &trust.front() ? R"({"function":)" : R"(,{"function":)", finding.function);
    json_.raw(R"(,"digits":)");
    if (finding.digits)
      json_.number(std::round(*finding.digits * 10) / 10);
    else
      json_.raw("null");
    named(R"(,"level":)", kLevels[static_cast<std::size_t>(finding.level)]);
    named(R"(,"text":)", finding.text);
    const Source::Position at =
        one.source == nullptr ? Source::Position{0, 0} : one.source->position(one.span.begin);
    json_.raw(R"(,"line":)");
    json_.integer(at.line);
    json_.raw(R"(,"column":)");
    json_.integer(static_cast<long long>(at.column));
    json_.raw(R"(,"times":)");
    json_.integer(static_cast<long long>(one.times));
    json_.raw("}");
  }
  json_.raw("]");
}

// The variables without their elements.
void ValueWriter::variables(const std::vector<const Variable*>& variables) {
  elided_ = true;
  json_.raw(R"(,"variables":[)");
  for (const Variable* variable : variables) {
    named(variable == variables.front() ? R"({"name":)" : R"(,{"name":)", variable->name);
    json_.raw(R"(,"value":)");
    value(variable->value, 0);
    json_.raw("}");
  }
  json_.raw("]");
}

void ValueWriter::outcome(const Outcome& outcome, bool all) {
  // What takes memory comes first: no line stops in its middle.
  const std::string help =
      outcome.help ? help_text(*outcome.help, DisplayOptions().width) : std::string();
  elided_ = !all && !fits(store_, outcome.value, kPrintedLimit.most);
  json_.raw(R"({"line":)");
  json_.integer(outcome.line);
  if (!outcome.source->origin.empty()) named(R"(,"file":)", outcome.source->origin);
  named(R"(,"source":)", outcome.source->text);
  if (outcome.names.size() == 1) named(R"(,"name":)", outcome.names[0]);
  if (outcome.names.size() > 1) {
    json_.raw(R"(,"name":)");
    strings(outcome.names);
  }
  json_.raw(R"(,"value":)");
  if (outcome.is_syntax_error()) {
    named(R"({"kind":"syntax","message":)", outcome.syntax_message);
    json_.raw(R"(,"column":)");
    json_.integer(static_cast<long long>(outcome.column));
    json_.raw("}");
  } else if (outcome.help) {
    named(R"({"kind":"string","text":)", help);
    json_.raw("}");
  } else {
    value(outcome.value, 0);
  }
  if (outcome.is_quiet) json_.raw(R"(,"quiet":true)");
  // Within a statement of several lines.
  if (outcome.is_place_known() && outcome.place.source == outcome.source) {
    const Source::Position at = outcome.source->position(outcome.place.span.begin);
    if (at.line != outcome.line) {
      json_.raw(R"(,"error_line":)");
      json_.integer(at.line);
      json_.raw(R"(,"error_column":)");
      json_.integer(static_cast<long long>(at.column));
    }
  }
  if (outcome.failed_line() != 0) {
    json_.raw(R"(,"failed_line":)");
    json_.integer(outcome.failed_line());
  }
  if (!outcome.pictures.empty()) pictures(outcome.pictures);
  if (outcome.variables) variables(*outcome.variables);
  if (!outcome.notes.empty()) {
    json_.raw(R"(,"notes":)");
    strings(outcome.notes);
  }
  if (!outcome.trust.empty()) trust(outcome.trust);
  json_.raw("}\n");
  json_.flush();
}

// Text of one line, without the newline; what is no UTF-8 is mended.
std::string line_of(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

void write_outcome(std::ostream& out, const Outcome& outcome, bool all) {
  ValueWriter(out, *outcome.store).outcome(outcome, all);
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
                       {"exists", std::filesystem::exists(efi::path_of(entry.path), ignored)}};
    text += line_of(json) + "\n";
  }
  return text;
}

}  // namespace worksheet
