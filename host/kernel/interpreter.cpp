#include "host/kernel/interpreter.hpp"

#include <algorithm>
#include <sstream>
#include <xeus/xhelper.hpp>

#include "fmt/format.h"
#include "host/kernel/kernel_signals.hpp"
#include "host/kernel/mime.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/language/statement_reader.hpp"
#include "host/worksheet/session/completion.hpp"
#include "host/worksheet/session/interruption.hpp"
#include "host/worksheet/session/load_packs.hpp"

namespace worksheet_kernel {

using namespace worksheet;
using nlohmann::json;

namespace {

// Cursors of notebooks count code points.
std::size_t offset_of(std::string_view text, int cursor) {
  std::size_t at = 0;
  for (int k = 0; at < text.size() && k < cursor; ++k) do
      ++at;
    while (at < text.size() && (text[at] & 0xC0) == 0x80);
  return at;
}

int cursor_of(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  return static_cast<int>(
      std::count_if(before.begin(), before.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

// The statements of a cell; *pending tells whether the last one waits for further lines.
std::vector<Source> statements_of(const std::string& code, const std::string& origin,
                                  bool* pending) {
  StatementReader reader;
  std::vector<Source> sources;
  auto take = [&](std::vector<Source> more) {
    for (Source& source : more) {
      source.origin = origin;
      sources.push_back(std::move(source));
    }
  };
  std::istringstream text(code);
  for (std::string line; std::getline(text, line);) take(reader.add_line(line));
  *pending = reader.pending();
  take(reader.finish());
  return sources;
}

// The name in which or behind which the cursor stands.
std::string name_at(std::string_view code, std::size_t at) {
  auto is_part = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || (c & 0x80) != 0;
  };
  std::size_t begin = at, end = at;
  while (begin > 0 && is_part(code[begin - 1])) --begin;
  while (end < code.size() && is_part(code[end])) ++end;
  return std::string(code.substr(begin, end - begin));
}

}  // namespace

Interpreter::Interpreter(std::span<const std::string> packs)
    : session_([this](const Outcome& outcome) { show(outcome); }) {
  Machine& machine = session_.machine();
  machine.keeps_pictures = Machine::Keep::all;
  load_packs(machine, packs, [](std::string_view what) {
    std::fprintf(stderr, "worksheet-kernel: %.*s\n", static_cast<int>(what.size()), what.data());
  });
  let_interrupt(machine);
  xeus::register_interpreter(this);
}

void Interpreter::show(const Outcome& outcome) {
  if (outcome.failed()) return show_error(outcome);
  if (silent_) return;
  const bool only_pictures = is_none(outcome.value) && !outcome.pictures.empty();
  const json bundle = only_pictures ? json() : value_bundle(outcome);
  if (!bundle.is_null() && outcome.source == last_)
    publish_execution_result(counter_, bundle, json::object());
  else if (!bundle.is_null())
    display_data(bundle, json::object(), json::object());
  for (const Drawn& drawn : outcome.pictures)
    display_data(picture_bundle(drawn, ++pictures_), json::object(), json::object());
}

void Interpreter::show_error(const Outcome& outcome) {
  const std::string message = outcome.is_syntax_error()
                                  ? outcome.syntax_message
                                  : static_cast<const aError*>(outcome.value.object)->message->text;
  std::vector<std::string> lines;
  std::istringstream text(plain_text(outcome));
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  const char* const kind = outcome.is_syntax_error() ? "syntax" : "error";
  error_ = {{"status", "error"}, {"ename", kind}, {"evalue", message}, {"traceback", lines}};
  if (!silent_) publish_execution_error(kind, message, lines);
}

json Interpreter::execute_request_impl(int counter, const std::string& code, bool silent, bool,
                                       json, bool) {
  bool pending = false;
  const std::vector<Source> sources =
      statements_of(code, fmt::format("In [{}]", counter), &pending);
  counter_ = counter;
  silent_ = silent;
  error_ = nullptr;
  last_ = sources.empty() ? nullptr : &sources.back();
  const SignalsLetIn signals(session_.machine());
  for (const Source& source : sources) {
    session_.run(source);
    if (!error_.is_null()) return error_;
  }
  return xeus::create_successful_reply();
}

json Interpreter::complete_request_impl(const std::string& code, int cursor) {
  const std::string_view before = std::string_view(code).substr(0, offset_of(code, cursor));
  const Completion found = complete(session_.machine(), before);
  return xeus::create_complete_reply(found.candidates, cursor_of(code, found.begin), cursor);
}

json Interpreter::inspect_request_impl(const std::string& code, int cursor, int) {
  const std::string name = name_at(code, offset_of(code, cursor));
  const auto page = name.empty() ? std::nullopt : help_page(session_.machine(), name);
  if (!page) return xeus::create_inspect_reply();
  return xeus::create_inspect_reply(true, help_bundle(*page));
}

json Interpreter::is_complete_request_impl(const std::string& code) {
  bool pending = false;
  statements_of(code, {}, &pending);
  return xeus::create_is_complete_reply(pending ? "incomplete" : "complete");
}

json Interpreter::kernel_info_request_impl() {
  return xeus::create_info_reply("", "worksheet-kernel", WORKSHEET_VERSION, "worksheet",
                                 WORKSHEET_VERSION, "text/x-worksheet", ".ws", "text", "text", "",
                                 "Worksheets with units and matrices: help lists what there is");
}

}  // namespace worksheet_kernel
