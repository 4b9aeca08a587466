#include "host/kernel/mime.hpp"

#include <sstream>

#include "fmt/format.h"
#include "host/worksheet/output/display.hpp"
#include "host/worksheet/output/help_text.hpp"
#include "host/worksheet/report/markup.hpp"
#include "host/worksheet/report/outcome_markup.hpp"
#include "host/worksheet/report/svg_inline.hpp"

namespace worksheet_kernel {

using namespace worksheet;

namespace {

// A formula wants a font with mathematical signs, and the page has none for it. A matrix that is
// wider than the page is scrolled beside its unit.
constexpr const char* kStyle =
    "<style>.worksheet math{font-size:1.05rem;font-family:\"STIX Two Math\",\"Cambria "
    "Math\",\"Latin Modern Math\",\"Libertinus Math\",math,serif}"
    ".worksheet math[display=block]{display:block math;width:max-content;text-align:left}"
    ".worksheet mtable{font-variant-numeric:tabular-nums}"
    ".worksheet .formula{display:flex;align-items:center}"
    ".worksheet .scroll{overflow-x:auto;min-width:0}"
    ".worksheet .trust{float:right;width:14rem;margin-left:1rem;padding-left:.6rem;"
    "border-left:2px solid;font-size:.875rem;opacity:.75}"
    ".worksheet .warning{opacity:1}</style>";

// The last newline is no part of what is shown.
std::string without_newline(std::string text) {
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace

std::string plain_text(const Outcome& outcome) {
  std::ostringstream text;
  show_outcome(text, outcome, DisplayOptions());
  return without_newline(std::move(text).str());
}

nlohmann::json help_bundle(const HelpPage& page) {
  nlohmann::json bundle = {{"text/plain", help_text(page, DisplayOptions().width)}};
  std::string markdown;
  if (page.kind == HelpPage::Kind::entry)
    for (const ReferenceEntry& entry : page.entries)
      markdown += fmt::format("### {}\n\n{}\n", entry.heading, entry.text);
  if (!markdown.empty()) bundle["text/markdown"] = markdown;
  return bundle;
}

nlohmann::json value_bundle(const Outcome& outcome) {
  if (outcome.help) return help_bundle(*outcome.help);
  const std::string text = plain_text(outcome);
  if (text.empty()) return nullptr;
  nlohmann::json bundle = {{"text/plain", text}};
  if (outcome.variables || outcome.is_definition) return bundle;
  // The remarks come first: they float beside the value.
  const std::string markup = remarks_markup(outcome) + values_markup(outcome, DisplayOptions());
  if (!markup.empty())
    bundle["text/html"] = fmt::format("<div class=\"worksheet\">{}{}</div>", kStyle, markup);
  return bundle;
}

nlohmann::json picture_bundle(const Drawn& drawn, int number) {
  const std::string svg = inline_svg(drawn.svg, number, drawn.description, InlineColours::own);
  return {
      {"text/plain", fmt::format("picture ({})", drawn.description)},
      {"image/svg+xml", drawn.svg},
      {"text/html", fmt::format("<div style=\"background:#fff;max-width:36rem\">{}</div>", svg)}};
}

}  // namespace worksheet_kernel
