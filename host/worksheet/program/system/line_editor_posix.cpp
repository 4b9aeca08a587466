#include <editline/readline.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/program/system/line_editor.hpp"
#include "host/worksheet/session/completion.hpp"

namespace worksheet {

namespace {

constexpr int kMostHistory = 1000;

// The machine for the line editor's callbacks, which take no argument of ours.
Machine* machine_at_prompt = nullptr;
// What was typed of the statement before the line that is edited.
std::string lines_before;

// The candidates for the word before the cursor, for the line editor: what they share, then each.
// It takes words to begin at its own marks, and the beginning before them is left out.
char** complete_word(const char* word, int, int) {
  rl_attempted_completion_over = 1;  // Else it would offer files.
  const std::string text =
      lines_before + std::string(rl_line_buffer, static_cast<std::size_t>(rl_point));
  Completion completion = complete(*machine_at_prompt, text);
  const std::size_t begin = text.size() - std::strlen(word);
  if (completion.candidates.empty() || begin < completion.begin) return nullptr;
  std::string shared = completion.candidates.front();
  for (const std::string& candidate : completion.candidates)
    shared.resize(static_cast<std::size_t>(
        std::mismatch(shared.begin(), shared.end(), candidate.begin(), candidate.end()).first -
        shared.begin()));
  if (completion.candidates.size() > 1)
    completion.candidates.insert(completion.candidates.begin(), shared);
  auto** const list =
      static_cast<char**>(std::calloc(completion.candidates.size() + 1, sizeof(char*)));
  for (std::size_t k = 0; list != nullptr && k < completion.candidates.size(); ++k)
    list[k] = strdup(completion.candidates[k].c_str() + (begin - completion.begin));
  return list;
}

std::string history_path() {
  const char* const state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') return std::string(state) + "/worksheet/history";
  const char* const home = std::getenv("HOME");
  if (home == nullptr) return {};
  return std::string(home) + "/.local/state/worksheet/history";
}

}  // namespace

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

namespace {

struct Freed {
  void operator()(char* p) const { std::free(p); }
};

// --- Keys ---
//
// SIGINT is blocked except while the prompt waits for a key and while a statement is evaluated:
// no Ctrl-C is lost between two lines.

class InterruptHeld {
 public:
  InterruptHeld() {
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, &before_);
    sigprocmask(SIG_BLOCK, nullptr, &held_);
  }
  ~InterruptHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  InterruptHeld(const InterruptHeld&) = delete;
  InterruptHeld& operator=(const InterruptHeld&) = delete;

  // Waits for input with SIGINT unblocked, for a moment also when input is there already.
  void wait(int descriptor) const {
    pollfd input = {descriptor, POLLIN, 0};
    // Other signals do not end the wait.
    while (ppoll(&input, 1, nullptr, &before_) < 0 && errno == EINTR &&
           !machine_at_prompt->interrupted) {
    }
    sigprocmask(SIG_SETMASK, &before_, nullptr);
    sigprocmask(SIG_SETMASK, &held_, nullptr);
  }

 private:
  sigset_t before_ = {};
  sigset_t held_ = {};
};

// The guard in force, for the callback that reads keys.
const InterruptHeld* held = nullptr;

// Ctrl-C was pressed before the line was taken.
bool given_up = false;

// The next byte of the input; EOF at its end and when Ctrl-C was pressed.
int next_byte(int descriptor) {
  unsigned char byte = 0;
  for (;;) {
    held->wait(descriptor);
    given_up = machine_at_prompt->interrupted;
    if (given_up) return EOF;
    const ssize_t count = ::read(descriptor, &byte, 1);
    if (count == 1) return byte;
    if (count == 0 || errno != EINTR) return EOF;
  }
}

// The next character, of one byte or more.
int next_key(FILE* input) {
  std::mbstate_t state = {};
  for (int byte; (byte = next_byte(fileno(input))) != EOF;) {
    const char part = static_cast<char>(byte);
    wchar_t key = 0;
    const std::size_t taken = std::mbrtowc(&key, &part, 1, &state);
    if (taken <= 1) return static_cast<int>(key);
    if (taken == static_cast<std::size_t>(-1)) state = {};  // No character: left out.
  }
  return EOF;
}

void prepare_editor() {
  std::setlocale(LC_CTYPE, "C.UTF-8");  // Of characters alone: numbers stay as they are.
  rl_readline_name = const_cast<char*>("worksheet");
  rl_catch_signals = 0;
  rl_getc_function = next_key;
  rl_attempted_completion_function = complete_word;
  rl_basic_word_break_characters = " \t\n+-*/^<>=!,;()[]{}'\"#?:.&|\\";
  rl_completion_append_character = '\0';
  rl_initialize();
}

}  // namespace

struct LineEditor::State {
  History history;
};

LineEditor::LineEditor(Machine& machine) {
  machine_at_prompt = &machine;
  prepare_editor();
  state_ = std::make_unique<State>();
}

LineEditor::~LineEditor() = default;

std::optional<LineEditor::Line> LineEditor::next_line(const char* prompt,
                                                      const std::string& before) {
  const InterruptHeld guard;
  held = &guard;
  given_up = false;
  lines_before = before;
  rl_prep_terminal(1);  // Before the prompt shows: a Ctrl-D typed sooner would be lost.
  const std::unique_ptr<char, Freed> line(readline(prompt));
  if (given_up) {
    machine_at_prompt->interrupted = Machine::kGoOn;  // Before another Ctrl-C comes through.
    return Line{{}, true};
  }
  if (line != nullptr) return Line{line.get(), false};
  return std::nullopt;
}

void LineEditor::remember(const std::string& lines) {
  state_->history.add(lines);
}

}  // namespace worksheet
