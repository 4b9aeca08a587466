#include "host/worksheet/report/report.hpp"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <sstream>

#include "fmt/format.h"
#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/report/markup.hpp"
#include "host/worksheet/report/outcome_markup.hpp"
#include "host/worksheet/report/prose.hpp"
#include "host/worksheet/report/svg_inline.hpp"

namespace worksheet {

namespace {

// No span of a statement.
constexpr Span kNothing = {std::string::npos, std::string::npos};

// The part of a line from `begin` to `end`, which are offsets in the statement, with its marked
// part.
std::string marked_markup(const std::string& text, std::size_t begin, std::size_t end,
                          Span marked) {
  const std::size_t from = std::clamp(marked.begin, begin, end);
  const std::size_t to = std::clamp(marked.end, from, end);
  const std::string_view all = text;
  // A place without extent, as that of a syntax error, is shown as a caret.
  const bool caret = marked.begin == marked.end && marked.begin >= begin && marked.begin <= end;
  std::string result = escaped(all.substr(begin, from - begin));
  if (caret) result += "<mark class=\"caret\">\u2038</mark>";
  if (to > from) result += fmt::format("<mark>{}</mark>", escaped(all.substr(from, to - from)));
  return result + escaped(all.substr(to, end - to));
}

std::string today() {
  const std::time_t now = std::time(nullptr);
  const std::tm local = *std::localtime(&now);
  char text[16];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d", &local)};
}

}  // namespace

void Report::begin_text(const std::string& text) {
  lines_.clear();
  next_line_ = 0;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines_.push_back(line);
  // A heading before anything else is the title.
  while (next_line_ < lines_.size() && trimmed(lines_[next_line_]).empty()) ++next_line_;
  if (next_line_ < lines_.size() && title_.empty()) {
    title_ = heading_words(lines_[next_line_]);
    if (!title_.empty()) ++next_line_;
  }
}

void Report::end_text() {
  add_prose(lines_.size());
  lines_.clear();
}

// The comments of the lines before `end`.
void Report::add_prose(std::size_t end) {
  end = std::min(end, lines_.size());
  while (next_line_ < end) {
    std::size_t last = next_line_;
    while (last < end && is_comment_line(lines_[last])) ++last;
    body_ += prose_markup(std::span(lines_).subspan(next_line_, last - next_line_));
    next_line_ = std::max(last, next_line_ + 1);
  }
}

// The statement with the marked part, and with the comments beside its lines.
std::string Report::source_markup(const Source& source, Span marked) const {
  std::string result;
  std::size_t begin = 0;
  for (std::size_t k = 0;; ++k) {
    const std::size_t newline = std::min(source.text.find('\n', begin), source.text.size());
    const std::size_t last = source.text.find_last_not_of(' ', newline == 0 ? 0 : newline - 1);
    const std::size_t end =
        last == std::string::npos || last < begin ? begin : std::min(last + 1, newline);
    result += marked_markup(source.text, begin, end, marked);
    const std::size_t line = static_cast<std::size_t>(source.line) - 1 + k;
    if (source.origin.empty() && line < lines_.size()) {
      // Behind a statement that is not the last one of its line stands the next one.
      const std::size_t behind = end - begin + (k == 0 ? source.indent : 0);
      const std::size_t sign = lines_[line].find_first_not_of(" \t\r", behind);
      if (sign != std::string::npos && lines_[line][sign] == '#')
        result +=
            fmt::format("{}<span class=\"comment\">{}</span>",
                        std::string(end > begin ? std::min<std::size_t>(sign - behind, 2) : 0, ' '),
                        escaped(trimmed(std::string_view(lines_[line]).substr(sign))));
    }
    if (newline == source.text.size()) return result;
    result += '\n';
    begin = newline + 1;
  }
}

// What is wrong; and where, if that is not in the statement itself.
std::string Report::error_markup(const Outcome& outcome) const {
  if (outcome.is_syntax_error())
    return fmt::format(
        "<p class=\"message\"><strong>Error:</strong> {} <small>({}, column {})"
        "</small></p>\n",
        escaped(outcome.syntax_message), escaped(outcome.source->line_words(outcome.line)),
        outcome.column);
  const auto* const error = static_cast<const aError*>(outcome.value.object);
  std::string result = fmt::format(
      "<p class=\"message\"><strong>Error:</strong> {}{}</p>\n", escaped(error->message->text),
      error->arg < 1 ? ""
                     : fmt::format(" <small>(argument {})</small>", static_cast<int>(error->arg)));
  const Place& place = outcome.place;
  if (outcome.is_place_known() && place.source != outcome.source)
    result += fmt::format(
        "<p class=\"where\">in the definition in {}:</p>\n<pre><code>{}</code>"
        "</pre>\n",
        escaped(place.source->line_words(place.source->line)),
        source_markup(*place.source, place.span));
  return result;
}

std::string Report::pictures_markup(const std::vector<Drawn>& pictures) {
  std::string result;
  for (const Drawn& drawn : pictures) {
    result += "<figure>\n" + inline_svg(drawn.svg, ++pictures_, drawn.description);
    if (!drawn.file.empty())
      result += fmt::format("<figcaption>{}</figcaption>\n", escaped(drawn.file));
    result += "</figure>\n";
  }
  return result;
}

void Report::add(const Outcome& outcome) {
  const Source& source = *outcome.source;
  const auto first = static_cast<std::size_t>(source.line) - 1;
  if (source.origin.empty()) {
    add_prose(first);
    next_line_ = std::max(next_line_, first + source.lines().size());
  }
  const std::string id = fmt::format("s{}", ++statements_);
  Span marked = kNothing;
  if (outcome.is_syntax_error())
    marked = {outcome.offset, outcome.offset};
  else if (outcome.failed() && outcome.is_place_known() && outcome.place.source == outcome.source)
    marked = outcome.place.span;
  body_ += fmt::format(
      "<section class=\"statement{}\" id=\"{}\">\n<pre class=\"source\"><code>{}</code></pre>\n",
      outcome.failed() ? " failed" : "", id, source_markup(source, marked));
  if (outcome.failed()) {
    errors_.push_back(
        fmt::format("<a href=\"#{}\">{}</a>", id, escaped(source.line_words(outcome.line))));
    body_ += "<div class=\"result\">\n" + error_markup(outcome) + "</div>\n";
  } else if (!outcome.is_definition) {
    const std::string values = values_markup(outcome, options_);
    if (!values.empty()) body_ += "<div class=\"result\">\n" + values + "</div>\n";
  }
  for (const Trust& trust : outcome.trust) {
    checked_ += trust.times;
    if (trust.finding.level != audit::Level::ok) remarked_ += 1;
  }
  body_ += remarks_markup(outcome);
  body_ += pictures_markup(outcome.pictures) + "</section>\n";
}

std::string report_objection(const std::string& path, const std::string& sheet) {
  namespace fs = std::filesystem;
  std::error_code failed;
  const fs::path place = efi::path_of(path);
  if (path == "-") return "a report needs the name of a file";
  if (fs::exists(place, failed) && !fs::is_regular_file(place, failed))
    return "a report cannot be written there: it is no regular file";
  if (fs::equivalent(place, efi::path_of(sheet), failed))
    return "the report would replace the worksheet";
  if (const int error = efi::NewFile(path).error())
    return fmt::format("a report cannot be written there: {}", std::strerror(error));
  return {};
}

std::string Report::page(bool interrupted) const {
  std::vector<std::string> notes;
  notes.push_back(
      fmt::format("{}{} \u00B7 {}",
                  title_.empty() ? "" : fmt::format("<code>{}</code> \u00B7 ", escaped(name_)),
                  counted(statements_, "statement"), today()));
  if (!errors_.empty())
    notes.push_back(fmt::format("<strong class=\"failure\">{}:</strong> {}",
                                counted(errors_.size(), "error"), joined(errors_, ", ")));
  if (interrupted)
    notes.emplace_back(
        "<strong class=\"failure\">The evaluation was interrupted: the report ends "
        "there.</strong>");
  const std::string last =
      checked_ == 0
          ? ""
          : fmt::format("<footer class=\"trust-count\">{} checked, {} with a note.</footer>\n",
                        counted(static_cast<std::int64_t>(checked_), "result"), remarked_);
  return page_markup(title_.empty() ? name_ : title_, notes, body_ + last);
}

}  // namespace worksheet
