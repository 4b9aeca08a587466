// The program among others: output that goes nowhere, interruptions, limits of time and memory.
#include <sys/wait.h>

#include <cstdlib>

#include "fmt/format.h"
#include "tests/host/build_files.hpp"
#include "tests/host/sheet.hpp"
#include "tests/support/sanitized.hpp"

using namespace test;

namespace {

struct Command {
  const char* line;  // For the shell: see expect_of_commands.
  const char* said;  // On standard output or standard error.
  int status = 2;
};

// $W is the program, $INT runs one and interrupts it soon; $T is the start of the paths of the tiny
// packs. In the directory are
//   s.ws      a picture and a 1
//   big.ws    a matrix whose JSON fills any pipe
//   idle/     a gnuplot that does nothing
//   endless/  one that does not end
void expect_of_commands(std::initializer_list<Command> commands) {
  const Directory directory;
  directory.write("s.ws", "plot(\"p.svg\", [1, 2])\n1\n");
  directory.write("big.ws", "A = identity(300)\n1\n");
  for (const auto& [name, line] : {std::pair{"idle", "exit 0"}, {"endless", "exec sleep 100"}}) {
    std::filesystem::create_directory(directory.path(name));
    const std::string script =
        directory.write(fmt::format("{}/gnuplot", name), fmt::format("#!/bin/sh\n{}\n", line));
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  }
  for (const Command& command : commands) {
    const std::string line = fmt::format(
        "cd '{}'; export WORKSHEET_CATALOGUE=none; W='{}'; T='{}/tiny_'; "
        "INT=\"timeout --preserve-status -s INT 0.5 $W\"; {{ {} ; }} >out 2>err",
        directory.path("."), kWorksheet, kTinyPacks, command.line);
    const int status = std::system(line.c_str());
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, command.status) << command.line;
    const std::string printed = directory.read("out") + directory.read("err");
    EXPECT_NE(printed.find(command.said), std::string::npos) << command.line << "\n" << printed;
  }
}

TEST(Commands, AWatchedSheetRunsAgainWhenItIsSaved) {
  expect_of_commands({
      {"await() { for k in $(seq 100); do grep -q $1 log && break; sleep 0.1; done; }; "
       "echo 1 >w.ws; $W --watch --html w.html w.ws >log 2>&1 & sleep 0.6; "
       "echo 'include \"part.ws\"' >new; mv new w.ws; await part.ws; "
       "echo 1 + 41 >part.ws; await 42; kill -INT $!; wait $!; cat log w.html",
       "part.ws was saved\n1 + 41 = 42\n<!DOCTYPE", 0},
      {"$W --watch -e 1", "--watch wants the name of a worksheet"},
      {"$W --prompt s.ws </dev/null", "--prompt wants a terminal"},
  });
}

TEST(Commands, LibrariesInTheDirectoryAreNotTaken) {
  expect_of_commands({{"touch libEfiUtils.so.0 libfmt.so.9; $W -e '40 + 2'", "42", 0}});
}

TEST(Commands, NoOutputIsLostInSilence) {
  expect_of_commands({
      {"$W -e 1 >/dev/full", "standard output: No space left on device"},
      {"$W --json -e 1 >/dev/full", "standard output: No space left on device"},
      {"$W --functions >/dev/full", "standard output: No space left on device"},
      {"$W --help >/dev/full", "standard output: No space left on device"},
      {"$W -e 1 >&-", "standard output: Bad file descriptor"},
      {"{ $W --functions --json; echo $? >st; } | :; exit $(cat st)", "output: Broken pipe"},
      {"$W --unknown >&- 2>&-; $W -e 1 >&- 2>&-", ""},
      {"$W - <&-", "standard input: cannot be read: Bad file descriptor"},
      {"$W --html r.html s.ws >/dev/full", "standard output: No space left on device"},
      {"grep -q '</html>' r.html && echo whole", "whole", 0},
      {"ulimit -f 10; $W --html r.html -e 1", "r.html: cannot be written: File too large"},
      {"ulimit -f 10; $W s.ws", "p.svg cannot be written: File too large"},
      {"PATH=idle:$PATH $W s.ws", "gnuplot ended without a whole picture", 1},
  });
}

TEST(Commands, AnInterruptionEndsWhateverIsUnderWay) {
  constexpr const char* kEnd = "interrupted: the worksheet was not evaluated to its end";
  expect_of_commands({
      {"$INT --pack ${T}spins.so -e 'twice([1])' -e 1", kEnd, 1},
      {"PATH=endless:$PATH $INT s.ws", kEnd, 1},
      {"sleep 2 | $INT -", kEnd, 1},
      {"{ $INT --json big.ws; echo $? >st; } | sleep 1; exit $(cat st)", "output: interrupted"},
      // A pack that waits in the system cannot be left.
      {"$W --pack ${T}sleeps.so -e 'twice([1])' & for k in 1 2 3; do sleep 0.4; kill -INT $!; "
       "for l in $(seq 20); do grep -q 'not at' err && break 2; sleep 0.1; done; done; "
       "kill -INT $!; wait $!",
       "not at its end yet", 130},
  });
}

TEST(Commands, LimitsOfTimeAndMemoryAreErrorsOfTheirStatement) {
  expect_of_commands({
      {"$W --timeout 0.2 --pack ${T}spins.so -e 'twice([1])' -e '41 + 1'", "\n42\n", 1},
      {"$W --timeout 0.2 -e 'A = identity(3000)' -e 'A*A'", "than the 0.2 s allowed", 1},
      {"PATH=endless:$PATH $W --timeout 0.2 s.ws", "\n1 = 1\n", 1},
      {"yes 1,2,3,4,5,6,7,8 | head -400000 >t.csv; $W --timeout 0.02 -e 'A = read(\"t.csv\")'",
       "than the 0.02 s allowed", 1},
      {"$W --timeout 0 -e 1", "--timeout"},
  });
  if (kSanitized) return;
  expect_of_commands({
      {"$W --max-memory 64M -e 'A = identity(5000)' -e '41 + 1'", "memory exhausted", 1},
      {"$W --max-memory 64M -e 'identity(5000)' -e '41 + 1'", "\n42\n", 1},
      {"$W --max-memory 1 -e 1", "--max-memory"},
  });
}

}  // namespace
