// The program: command line, JSON, exit status, catalogue.
#include <unistd.h>

#include <chrono>

#include "fmt/format.h"
#include "host/worksheet/session/progress.hpp"
#include "tests/host/build_files.hpp"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

// What the worksheet of the test gives, line by line.
constexpr const char* kJson =
    R"json({"line":1,"source":"x = 1.5","name":"x","value":{"kind":"scalar","re":1.5,"im":0.0}}
{"line":2,"source":"[1, 2i; 3, 4]","value":{"kind":"matrix","rows":2,"cols":2,"re":[1.0,3.0,0.0,4.0],"im":[0.0,0.0,2.0,0.0]}}
{"line":3,"source":"lean([0])","value":{"kind":"matrix","rows":1,"cols":1,"re":null,"im":null}}
{"line":4,"source":"\"a\\\"b\"","value":{"kind":"string","text":"a\"b"}}
{"line":5,"source":"f(i, j) = i","name":"f","value":{"kind":"function","name":"f","parameters":["i","j"]}}
{"line":6,"source":"reverse(lean([0; 0]))","value":{"kind":"none"}}
{"line":7,"source":"tr([1, 2])","value":{"kind":"error","message":"must be square","mark":0,"arg":1,"value":null}}
{"line":8,"source":"1 +","value":{"kind":"syntax","message":"expected an operand","column":4}}
{"line":9,"source":"[0/0, 1/0, -1/0, -0.1]","value":{"kind":"matrix","rows":1,"cols":4,"re":["nan","inf","-inf",-0.1],"im":null}}
{"line":10,"source":"[[1], \"t\"]","value":{"kind":"matrix","rows":1,"cols":2,"re":[{"kind":"matrix","rows":1,"cols":1,"re":[1.0],"im":null},{"kind":"string","text":"t"}],"im":null}}
{"line":11,"source":"rows(\"t\")","value":{"kind":"error","message":"must be array","mark":0,"arg":1,"value":{"kind":"string","text":"t"}}}
)json";

TEST(Program, JsonOfEveryKindOfValue) {
  const ProgramRun run = run_program(
      {"--json", "-"},
      "x = 1.5\n[1, 2i; 3, 4]\nlean([0])\n\"a\\\"b\"\nf(i, j) = i\nreverse(lean([0; 0]))\n"
      "tr([1, 2])\n1 +\n[0/0, 1/0, -1/0, -0.1]\n[[1], \"t\"]\nrows(\"t\")\n");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, kJson);
}

TEST(Program, NumbersRoundTrip) {
  for (const char* number :
       {"0.1", "123456789.123456789", "5e-324", "1.7976931348623157e308", "1e23"}) {
    const ProgramRun run = run_program({"--json", "-e", number});
    EXPECT_EQ(std::strtod(run.member(0, "/value/re").c_str(), nullptr),
              std::strtod(number, nullptr));
  }
}

TEST(Program, ExpressionsComeBeforeTheFile) {
  const Directory directory;
  directory.write("data.csv", "1,2\n");
  const std::string sheet = directory.write("sheet.ws", "read(\"data.csv\") * k");
  const ProgramRun run = run_program({"-e", "k = 3", "-e", "-1", sheet});
  EXPECT_EQ(run.out, "k = 3\n-1 = -1\nread(\"data.csv\") * k = 1 x 2 matrix\n  3  6\n");
  EXPECT_EQ(run.status, 0);
}

TEST(Program, WrongUsageGivesStatusTwo) {
  const Directory directory;
  const std::string text = directory.write("text.so", "no library");
  struct Case {
    std::vector<std::string> arguments;
    const char* reason;
  };
  const Case cases[] = {
      {{"--unknown"}, "--unknown"},
      {{"/nonexistent.ws"}, "/nonexistent.ws: cannot be read"},
      {{"/tmp"}, "/tmp: cannot be read"},
      {{kWorksheet}, "is no text"},
      {{"--pack", "/nonexistent.so", "-e", "1"}, "/nonexistent.so: no such file"},
      {{"--pack", text, "-e", "1"}, "text.so: file too short"},
      {{"--pack", kNoPackFile, "-e", "1"}, "is not a function pack: it has no function table"},
      {{"--digits", "0", "-e", "1"}, "--digits"},
  };
  for (const Case& c : cases) {
    const ProgramRun run = run_program(c.arguments);
    EXPECT_EQ(run.status, 2) << c.reason;
    EXPECT_NE(run.err.find(c.reason), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "");
  }
  EXPECT_EQ(run_program({"--help"}).status, 0);
  EXPECT_EQ(run_program({"--version"}).status, 0);
  EXPECT_EQ(run_program({"--pack", kPackFile, "-e", "rows([1;2])"}).out, "2\n");
}

TEST(Program, NumbersDoNotDependOnTheLocale) {
  ASSERT_EQ(setenv("LC_ALL", "de_DE.UTF-8", 1), 0);
  const ProgramRun run = run_program({"-e", "1.5 + 0.25"});
  unsetenv("LC_ALL");
  EXPECT_EQ(run.out, "1.75\n");
}

// --- The catalogue ---

TEST(Catalogue, ARegisteredPackIsLoadedAtStart) {
  const Directory directory;
  const std::string catalogue = directory.path("data/packs.json");
  auto run = [&](std::vector<std::string> arguments) {
    return run_program(arguments, "", catalogue);
  };
  EXPECT_EQ(run({"--packs"}).out, "");
  EXPECT_EQ(run({"--unregister", kPackFile}).status, 2) << "it is not there";
  ASSERT_EQ(run({"--register", kPackFile}).status, 0);
  ASSERT_EQ(run({"--register", kPackFile}).status, 0) << "twice is the same as once";
  const ProgramRun packs = run({"--packs", "--json"});
  EXPECT_EQ(packs.member(0, "/id"), "{5C1E07A2-3D94-4B6F-8E21-A0B7C3D9E415}");
  EXPECT_EQ(packs.member(0, "/path"), kPackFile);
  EXPECT_EQ(packs.member(1, ""), "");
  EXPECT_EQ(run({"--functions", "--json"}).member(0, "/pack"), kPackFile);
  EXPECT_EQ(run({"--unregister", kPackFile}).status, 0);
  EXPECT_EQ(run({"--packs"}).out, "");
  EXPECT_EQ(run({"--register", tiny_pack("cannot_register")}).status, 2)
      << "it cannot be registered";
}

TEST(Catalogue, APackThatHasGoneIsReported) {
  const Directory directory;
  const std::string catalogue = directory.write(
      "packs.json", R"({"format": 1, "packs": [{"id": "{1}", "path": "/nonexistent.so"}]})");
  const ProgramRun run = run_program({"-e", "rows([1])"}, "", catalogue);
  EXPECT_EQ(run.out, "1\n") << "the pack beside the program serves";
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.err.find("/nonexistent.so: no such file"), std::string::npos) << run.err;
  EXPECT_NE(run_program({"--packs"}, "", catalogue).out.find("gone"), std::string::npos);
  // It cannot be asked to go.
  EXPECT_EQ(run_program({"--unregister", "/other.so"}, "", catalogue).status, 2);
  EXPECT_EQ(run_program({"--unregister", "/nonexistent.so"}, "", catalogue).status, 0);
  EXPECT_EQ(run_program({"--packs"}, "", catalogue).out, "");
}

TEST(Catalogue, PacksStandSideBySide) {
  const Directory directory;
  const std::string catalogue = directory.path("packs.json");
  const std::string tiny = tiny_pack("none");
  ASSERT_EQ(run_program({"--register", kPackFile}, "", catalogue).status, 0);
  ASSERT_EQ(run_program({"--register", tiny}, "", catalogue).status, 0);
  const ProgramRun both = run_program({"-e", "twice(stack([1], [2]))"}, "", catalogue);
  EXPECT_EQ(both.out, "2 x 1 matrix\n  2\n  4\n");
  EXPECT_EQ(both.err, "");
  ASSERT_EQ(run_program({"--unregister", kPackFile}, "", catalogue).status, 0);
  const ProgramRun one = run_program({"-e", "rows(twice([1]))"}, "", catalogue);
  EXPECT_NE(one.out.find("unknown name: rows"), std::string::npos) << one.out;
  // Of two functions of one name the first counts; the same pack twice is the same as once.
  const std::string copy = directory.path("copy.so");
  std::filesystem::copy_file(kPackFile, copy);
  const ProgramRun hidden =
      run_program({"--pack", copy, "--pack", kPackFile, "--pack", copy, "-e", "rows([1])"});
  EXPECT_EQ(hidden.out, "1\n");
  EXPECT_EQ(
      hidden.err,
      fmt::format(
          "worksheet: {}: 37 of its 37 functions are hidden by {}: rows, cols, identity, last, "
          "length, ...\n",
          kPackFile, copy));
}

TEST(Catalogue, IsWholeWheneverAProcessIsKilled) {
  constexpr int kMoments = 40;
  const Directory directory;
  const std::string catalogue = directory.path("packs.json");
  ASSERT_EQ(run_program({"--register", kPackFile}, "", catalogue).status, 0);
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(run_program({"--register", kPackFile}, "", catalogue).status, 0);
  const std::chrono::duration<double> usual = std::chrono::steady_clock::now() - start;
  for (int k = 1; k <= kMoments; ++k) {
    const std::string command = fmt::format(
        "WORKSHEET_CATALOGUE='{}' timeout -s KILL {:.6f} {} --{}register {} 2>{}", catalogue,
        usual.count() * k / kMoments, kWorksheet, k % 3 == 2 ? "un" : "", kPackFile, "/dev/null");
    [[maybe_unused]] const int status = std::system(command.c_str());
    const ProgramRun packs = run_program({"--packs", "--json"}, "", catalogue);
    ASSERT_EQ(packs.status, 0) << command << packs.err;
    EXPECT_EQ(packs.member(1, ""), "");
  }
  ASSERT_EQ(run_program({"--register", kPackFile}, "", catalogue).status, 0) << "no lock is left";
  EXPECT_NE(run_program({"--packs", "--json"}, "", catalogue).member(0, ""), "");
  EXPECT_EQ(directory.names(), (std::vector<std::string>{"packs.json", "packs.json.lock"}));
}

TEST(Program, ShowsProgressAndTakesItBack) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  std::string seen;
  {
    const worksheet::Progress progress(ends[1], std::chrono::milliseconds(0),
                                       "x = [1,\n 2] " + std::string(100, 'x'));
    char c = 0;
    while (seen.find(": x = [1,") == std::string::npos && read(ends[0], &c, 1) == 1) seen += c;
  }
  { const worksheet::Progress fast(ends[1], std::chrono::hours(1), "x"); }
  { const worksheet::Progress none(-1, std::chrono::milliseconds(0), "x"); }
  close(ends[1]);
  for (char c; read(ends[0], &c, 1) == 1;) seen += c;
  close(ends[0]);
  const std::string line = "\r  0 s: x = [1,";
  EXPECT_TRUE(seen.starts_with(line)) << seen;
  EXPECT_TRUE(seen.ends_with("\r" + std::string(line.size() - 1, ' ') + "\r")) << seen;
}

TEST(Catalogue, ACorruptOneIsReportedAndLeftAlone) {
  const Directory directory;
  for (const char* content : {"not JSON", "{}", R"({"format": 2, "packs": []})", R"([1])"}) {
    const std::string catalogue = directory.write("packs.json", content);
    const ProgramRun used = run_program({"-e", "1"}, "", catalogue);
    EXPECT_EQ(used.out, "1\n");
    EXPECT_NE(used.err.find("packs.json"), std::string::npos) << used.err;
    const ProgramRun changed = run_program({"--register", kPackFile}, "", catalogue);
    EXPECT_EQ(changed.status, 2);
    EXPECT_NE(changed.err.find("packs.json"), std::string::npos) << changed.err;
    EXPECT_EQ(run_program({"--packs"}, "", catalogue).status, 2);
    EXPECT_EQ(directory.read("packs.json"), content);
  }
}

TEST(Catalogue, IsReplacedUnderALock) {
  const Directory directory;
  const std::string catalogue = directory.path("packs.json");
  // Copies of the pack at many paths, registered at once: the last one stands, and the file is
  // whole whenever it is looked at.
  std::string command;
  for (int k = 0; k < 8; ++k)
    command += fmt::format("WORKSHEET_CATALOGUE='{}' {} --register {} & ", catalogue, kWorksheet,
                           kPackFile);
  ASSERT_EQ(std::system(("{ " + command + "wait; }").c_str()), 0);
  const ProgramRun packs = run_program({"--packs", "--json"}, "", catalogue);
  EXPECT_NE(packs.member(0, ""), "");
  EXPECT_EQ(packs.member(1, ""), "");
  EXPECT_EQ(directory.names().size(), 2u) << "the catalogue and its lock, no leavings";
}

}  // namespace
