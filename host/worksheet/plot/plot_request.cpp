#include "host/worksheet/plot/plot_request.hpp"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/units/unit.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/readable.hpp"

namespace worksheet {

namespace {

// Longer expressions make no good label.
constexpr std::size_t kLongestLabel = 40;

bool ends_with_suffix(std::string_view text, std::string_view suffix) {
  return text.size() > suffix.size() &&
         std::equal(suffix.rbegin(), suffix.rend(), text.rbegin(), [](char a, char b) {
           return a == std::tolower(static_cast<unsigned char>(b));
         });
}

// The text behind "key:", and whether there is one.
bool has_key(std::string_view text, std::string_view key, std::string* rest) {
  if (!text.starts_with(key) || text.substr(key.size()).substr(0, 1) != ":") return false;
  text.remove_prefix(key.size() + 1);
  const std::size_t first = text.find_first_not_of(' ');
  *rest = first == std::string_view::npos ? "" : std::string(text.substr(first));
  return true;
}

bool is_label(std::string_view text, PlotRequest& request) {
  return has_key(text, "title", &request.title) || has_key(text, "x", &request.x_label) ||
         has_key(text, "y", &request.y_label);
}

// A literal matrix says nothing that the picture does not show.
std::string label_of(std::string_view expression) {
  const bool good = character_count(expression) <= kLongestLabel &&
                    expression.find('\n') == std::string_view::npos && !expression.starts_with('[');
  return good ? std::string(expression) : "";
}

void take_text(PlotRequest& request, const char* words, Span span, bool first) {
  if (is_label(words, request)) return;
  if (first) {
    const bool png = ends_with_suffix(words, ".png");
    if (!png && !ends_with_suffix(words, ".svg"))
      throw PlotArgumentError(span, "the file of a picture ends in .svg or .png");
    request.format = png ? PictureFormat::png : PictureFormat::svg;
    request.file = words;
    request.file_span = span;
    return;
  }
  if (request.data.empty() || !request.data.back().name.empty())
    throw PlotArgumentError(span, "a name stands behind what it is to name");
  request.data.back().name = words;
  request.data.back().name_span = span;
}

}  // namespace

PlotRequest read_plot_request(Machine& machine, const Call& call) {
  PlotRequest request;
  for (std::size_t k = 0; k < call.arguments.size(); ++k) {
    const Value& value = call.arguments[k];
    if (is_text(value)) {
      take_text(request, text(value), call.places[k], k == 0);
      continue;
    }
    if (!is_number(value) && !is_matrix(value))
      throw PlotArgumentError(call.places[k], "must be a number, a matrix or text");
    if (is_matrix(value) && contains_ptrs(matrix(value)))
      throw PlotArgumentError(call.places[k], "may not be nested");
    request.data.push_back({readable(machine, value),
                            call.places[k],
                            label_of(machine.text_at(call.places[k])),
                            "",
                            {}});
  }
  if (request.data.empty()) throw PlotArgumentError(call.span, "there is nothing to draw");
  return request;
}

double factor_to(const PlotRequest::Data& data, const Unit* unit) {
  const auto factor = needs_no_unit(data.value) ? 1.0 : common_conversion(data.value.unit, unit);
  if (!factor)
    throw PlotArgumentError(data.span, fmt::format("one axis has one unit, not {} and {}",
                                                   unit_text(unit), unit_text(data.value.unit)));
  return *factor;
}

std::vector<double> real_elements(const PlotRequest::Data& data, const Unit* unit) {
  const double factor = factor_to(data, unit);
  const Value& v = data.value;
  const std::ptrdiff_t count = is_number(v) ? 1 : element_count(matrix(v));
  std::vector<double> elements;
  elements.reserve(static_cast<std::size_t>(count));
  for (std::ptrdiff_t k = 0; k < count; ++k) {
    const double im = is_number(v) ? v.im : im_at(matrix(v), k);
    if (im != 0.0)
      throw PlotArgumentError(data.span, "must be real: take abs, re or im of what is complex");
    elements.push_back((is_number(v) ? v.re : re_at(matrix(v), k)) * factor);
  }
  return elements;
}

std::string label_with_unit(const std::string& label, const Unit* unit) {
  if (unit == nullptr) return label;
  return label.empty() ? unit->name() : fmt::format("{} in {}", label, unit->name());
}

}  // namespace worksheet
