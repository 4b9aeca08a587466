#include "host/worksheet/prompt.hpp"

#include <editline/readline.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/worksheet/elementary.hpp"

namespace worksheet {

namespace {

constexpr int kMostHistory = 1000;
constexpr const char* kPrompt = "> ";
constexpr const char* kContinuation = ". ";

// What the line editor's callbacks complete names from.
const Machine* completing = nullptr;

std::vector<std::string> known_names() {
  std::vector<std::string> names = elementary_names();
  for (const auto& pack : completing->packs)
    for (const Row& row : pack->rows()) names.push_back(row.name);
  for (const auto& [name, variable] : completing->variables())
    if (variable->defined) names.push_back(name);
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

// Called again and again for one completion; each time gives the next candidate, or null.
char* next_candidate(const char* start, int call) {
  static std::vector<std::string> candidates;
  if (call == 0) {
    candidates = known_names();
    std::erase_if(candidates, [&](const std::string& name) { return !name.starts_with(start); });
    std::reverse(candidates.begin(), candidates.end());
  }
  if (candidates.empty()) return nullptr;
  const std::string name = candidates.back();
  candidates.pop_back();
  return strdup(name.c_str());
}

char** complete(const char* start, int, int) {
  rl_attempted_completion_over = 1;  // No names of files.
  return rl_completion_matches(start, next_candidate);
}

std::string history_path() {
  const char* const state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') return std::string(state) + "/worksheet/history";
  const char* const home = std::getenv("HOME");
  if (home == nullptr) return {};
  return std::string(home) + "/.local/state/worksheet/history";
}

// The history of earlier sessions, kept at the end of this one.
class History {
 public:
  History() : path_(history_path()) {
    using_history();
    stifle_history(kMostHistory);
    if (!path_.empty()) read_history(path_.c_str());
  }
  ~History() {
    if (path_.empty()) return;
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path(), ignored);
    write_history(path_.c_str());
  }
  History(const History&) = delete;
  History& operator=(const History&) = delete;

  void add(const std::string& line) {
    if (line.find_first_not_of(" \t") != std::string::npos && line != last_)
      add_history(line.c_str());
    last_ = line;
  }

 private:
  std::string path_;
  std::string last_;
};

struct Freed {
  void operator()(char* p) const { std::free(p); }
};

// The next line; nothing at the end of input. An interrupted line is empty, and *interrupted true.
std::optional<std::string> next_line(const char* prompt, bool* interrupted) {
  errno = 0;
  const std::unique_ptr<char, Freed> line(readline(prompt));
  *interrupted = line == nullptr && errno == EINTR;
  if (*interrupted) return std::string();
  if (line == nullptr) return std::nullopt;
  return std::string(line.get());
}

}  // namespace

void run_prompt(Session& session) {
  Machine& machine = session.machine();
  completing = &machine;
  rl_readline_name = const_cast<char*>("worksheet");
  rl_attempted_completion_function = complete;
  rl_basic_word_break_characters = " \t\n+-*/^<>=!,;()[]{}'\"#";
  rl_completion_append_character = '\0';
  History history;
  StatementReader reader;
  bool interrupted = false;
  while (const auto line = next_line(reader.pending() ? kContinuation : kPrompt, &interrupted)) {
    machine.interrupted = 0;
    if (interrupted) {
      std::putchar('\n');
      reader = StatementReader();
      continue;
    }
    history.add(*line);
    for (const Source& source : reader.add_line(*line)) session.run(source);
    machine.interrupted = 0;
  }
  for (const Source& source : reader.finish()) session.run(source);
  std::putchar('\n');
}

}  // namespace worksheet
