// The prompt, at a terminal of its own.
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

#include "tests/worksheet/sheet.hpp"

using namespace test;

namespace {

constexpr auto kPatience = std::chrono::seconds(20);

// The program at a terminal.
class Terminal {
 public:
  explicit Terminal(const Directory& home) {
    pid_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (pid_ != 0) return;
    setenv("HOME", home.path("").c_str(), 1);
    setenv("TERM", "dumb", 1);
    setenv("NO_COLOR", "1", 1);
    setenv("WORKSHEET_CATALOGUE", home.path("packs.json").c_str(), 1);
    unsetenv("XDG_STATE_HOME");
    execl(WORKSHEET_PROGRAM, WORKSHEET_PROGRAM, static_cast<char*>(nullptr));
    _exit(127);
  }
  ~Terminal() {
    close(terminal_);
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void type(const std::string& keys) {
    ASSERT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  // Whether `text` appears behind what was waited for before.
  bool shows(const std::string& text) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
      const std::size_t at = seen_.find(text, from_);
      if (at != std::string::npos) {
        from_ = at + text.size();
        return true;
      }
      if (std::chrono::steady_clock::now() > deadline || !read_some()) return false;
    }
  }

  // The status with which the program ends.
  int status() {
    while (read_some()) continue;
    int status = 0;
    waitpid(pid_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string seen() const { return seen_; }

 private:
  // False at the end of the program's output.
  bool read_some() {
    pollfd ready = {terminal_, POLLIN, 0};
    if (poll(&ready, 1, 100) <= 0) return true;
    char buffer[4096];
    const ssize_t count = read(terminal_, buffer, sizeof buffer);
    if (count > 0) seen_.append(buffer, static_cast<std::size_t>(count));
    return count > 0;
  }

  int terminal_ = -1;
  pid_t pid_ = -1;
  std::string seen_;
  std::size_t from_ = 0;
};

constexpr const char* kCtrlC = "\x03";
constexpr const char* kCtrlD = "\x04";

TEST(Prompt, EvaluatesCompletesAndRemembers) {
  const Directory home;
  {
    Terminal terminal(home);
    ASSERT_TRUE(terminal.shows("> ")) << terminal.seen();
    terminal.type("x = (40 +\r");
    ASSERT_TRUE(terminal.shows(". ")) << "an open bracket asks for more";
    terminal.type("2)\r");
    EXPECT_TRUE(terminal.shows("x = 42")) << terminal.seen();
    terminal.type("choles\t([4])\r");
    EXPECT_TRUE(terminal.shows("cholesky([4])")) << terminal.seen();
    ASSERT_TRUE(terminal.shows("> "));
    terminal.type("[1, \r");
    ASSERT_TRUE(terminal.shows(". "));
    terminal.type(kCtrlC);
    ASSERT_TRUE(terminal.shows("> ")) << "what was typed is given up";
    terminal.type("1 + x\r");
    EXPECT_TRUE(terminal.shows("43")) << terminal.seen();
    terminal.type(kCtrlD);
    terminal.status();
  }
  Terminal again(home);
  ASSERT_TRUE(again.shows("> "));
  again.type("\x10\r");  // The line before this one.
  EXPECT_TRUE(again.shows("1 + x")) << again.seen();
  EXPECT_TRUE(again.shows("unknown name: x")) << again.seen();
}

TEST(Prompt, CtrlCEndsAnEvaluation) {
  const Directory home;
  Terminal terminal(home);
  ASSERT_TRUE(terminal.shows("> "));
  terminal.type("g(i, j) = i\r");
  terminal.type("h(i, j) = tr(matrix(200, 200, g))\rk = 7\rk\r");
  ASSERT_TRUE(terminal.shows("\n7"));
  terminal.type("matrix(2000, 2000, h)\r");
  ASSERT_TRUE(terminal.shows("h)\r\n"));
  terminal.type(kCtrlC);
  EXPECT_TRUE(terminal.shows("error: interrupted")) << terminal.seen();
  terminal.type("k + 1\r");
  EXPECT_TRUE(terminal.shows("\n8")) << "the session is as it was: " << terminal.seen();
  terminal.type(kCtrlD);
  EXPECT_EQ(terminal.status(), 1);
}

}  // namespace
