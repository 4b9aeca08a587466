// The prompt, at a terminal of its own.
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

#include "tests/host/build_files.hpp"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kPatience = std::chrono::seconds(60);

constexpr const char* kCtrlC = "\x03";
constexpr const char* kCtrlD = "\x04";

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
    execl(kWorksheet, kWorksheet, static_cast<char*>(nullptr));
    _exit(127);
  }
  ~Terminal() {
    close(terminal_);
    if (pid_ < 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void type(const std::string& keys) {
    const ssize_t written = write(terminal_, keys.data(), keys.size());
    EXPECT_TRUE(written == static_cast<ssize_t>(keys.size()) || errno == EIO);
  }

  // Whether `text` appears behind what was waited for before.
  bool shows(const std::string& text) {
    const auto deadline = Clock::now() + kPatience;
    while (!found(text))
      if (Clock::now() > deadline || !read_some()) return false;
    return true;
  }

  // Whether the prompt comes. Keys are typed behind it: the terminal may lose what comes earlier.
  bool asks() { return shows("> "); }

  // Ends the input; gives the status with which the program ends, -1 if it does not.
  int end() {
    type(kCtrlD);
    const auto deadline = Clock::now() + kPatience;
    while (read_some())
      if (Clock::now() > deadline) return -1;
    int status = 0;
    waitpid(std::exchange(pid_, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string seen() const { return seen_; }

 private:
  bool found(const std::string& text) {
    const std::size_t at = seen_.find(text, from_);
    if (at == std::string::npos) return false;
    from_ = at + text.size();
    return true;
  }

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

TEST(Prompt, EvaluatesCompletesAndRemembers) {
  const Directory home;
  {
    Terminal terminal(home);
    ASSERT_TRUE(terminal.asks()) << terminal.seen();
    terminal.type("x = (40 +\r");
    ASSERT_TRUE(terminal.shows(". ")) << "an open bracket asks for more";
    terminal.type("2)\r");
    EXPECT_TRUE(terminal.shows("x = 42")) << terminal.seen();
    ASSERT_TRUE(terminal.asks());
    terminal.type("\x10\r");
    EXPECT_TRUE(terminal.shows("2)\r\nx = 42")) << "the statement is whole: " << terminal.seen();
    ASSERT_TRUE(terminal.asks());
    terminal.type("identi\t(1)\r");
    EXPECT_TRUE(terminal.shows("identity(1)")) << terminal.seen();
    ASSERT_TRUE(terminal.asks());
    terminal.type("1 + x # \u00fcber\r");
    EXPECT_TRUE(terminal.shows("43")) << terminal.seen();
    ASSERT_TRUE(terminal.asks());
    terminal.type("quit\r");
    EXPECT_EQ(terminal.end(), 0);
  }
  Terminal again(home);
  ASSERT_TRUE(again.asks());
  again.type("\x10\r");  // The line before this one.
  EXPECT_TRUE(again.shows("1 + x # \u00fcber")) << again.seen();
  EXPECT_TRUE(again.shows("unknown name: x")) << again.seen();
}

TEST(Prompt, CtrlCGivesUpALineOrAnEvaluation) {
  const Directory home;
  Terminal terminal(home);
  ASSERT_TRUE(terminal.asks()) << terminal.seen();
  terminal.type("[1, \r");
  ASSERT_TRUE(terminal.shows(". "));
  terminal.type("2, 3");
  ASSERT_TRUE(terminal.shows("2, 3"));
  for (int k = 0; k < 3; ++k) {
    terminal.type(kCtrlC);
    ASSERT_TRUE(terminal.shows("\n> ")) << terminal.seen();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));  // For ticks behind the signal.
  }
  terminal.type("1 + \r");
  EXPECT_TRUE(terminal.shows("line 2, column 4")) << "lines that were given up count";
  ASSERT_TRUE(terminal.asks());
  terminal.type("g(i, j) = i\r");
  ASSERT_TRUE(terminal.asks());
  terminal.type("h(i, j) = tr(matrix(200, 200, g))\r");
  ASSERT_TRUE(terminal.asks());
  terminal.type("matrix(2000, 2000, h)\r");
  ASSERT_TRUE(terminal.shows("2000, h)\r\n")) << "the line is taken";
  terminal.type(kCtrlC);
  ASSERT_TRUE(terminal.shows("error: interrupted")) << terminal.seen();
  ASSERT_TRUE(terminal.asks());
  // The pack's own work is left at once, too.
  terminal.type("svd(identity(2000) + 1)\r");
  ASSERT_TRUE(terminal.shows("+ 1)\r\n"));
  terminal.type(kCtrlC);
  ASSERT_TRUE(terminal.shows("error: interrupted")) << terminal.seen();
  ASSERT_TRUE(terminal.asks());
  terminal.type("g(7, 1) + 1\r");
  EXPECT_TRUE(terminal.shows("\n8")) << "the session is as it was: " << terminal.seen();
  ASSERT_TRUE(terminal.asks());
  EXPECT_EQ(terminal.end(), 1);
}

}  // namespace
