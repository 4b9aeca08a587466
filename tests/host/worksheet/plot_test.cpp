// Pictures: what the functions that draw accept, what stands in the files, and what is left behind.
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "fmt/format.h"
#include "tests/host/build_files.hpp"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

std::size_t count_of(const std::string& text, const std::string& what) {
  std::size_t count = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
    ++count;
  return count;
}

class Plot : public InSheet {
 protected:
  // The SVG file that the statement draws.
  std::string svg(const std::string& statements) {
    sheet.run(statements);
    EXPECT_EQ(sheet.member("/value/kind"), "none") << sheet.member("");
    EXPECT_EQ(sheet.member("/pictures"), "[\"p.svg\"]");
    return directory.read("p.svg");
  }
};

TEST_F(Plot, AxesSayWhatTheyShowAndInWhichUnit) {
  const std::string axes =
      svg("t = [0; 1; 2; 3]{s}\n"
          "u = [0; 500; 0; -500]{um} in {mm}\n"
          "plot(\"p.svg\", t, u, \"tip <& 'free'\", t, 2*u, \"title: `id` $HOME {a_b}\")");
  for (const char* text :
       {"<text>t in s</text>", "<text>mm</text>", "<text>tip &lt;&amp; 'free'</text>",
        "<text>2*u</text>", "<text>`id` $HOME {a_b}</text>", "−0.5</tspan>"})
    EXPECT_EQ(count_of(axes, text), 1u) << text;
}

TEST_F(Plot, AxesBeginWithDataThatBeginAtZero) {
  for (const char* y : {"[0, 1, 7]", "[0.01, 1, 7]"})
    EXPECT_EQ(count_of(svg(std::string("plot(\"p.svg\", [0, 1, 2], ") + y + ")"), "\u2212"), 0u)
        << y;
  EXPECT_NE(count_of(svg("plot(\"p.svg\", [1, 2, 3], [-1, 1, 7])"), "\u2212"), 0u);
}

TEST_F(Plot, PointsThatAreNotFiniteAreGaps) {
  const std::string curve = "stroke='rgb( 53, 103, 168)'  d='M";
  const std::string whole = svg("plot(\"p.svg\", [1, 2, 3, 4, 5])");
  const std::string gaps = svg("plot(\"p.svg\", [1, 2, 0/0, 4, 5, 1/0, 7])");
  auto moves = [&](const std::string& svg) {
    const std::size_t at = svg.find(curve);
    return count_of(svg.substr(at, svg.find("/>", at) - at), "M");
  };
  EXPECT_EQ(moves(whole), 1u);
  EXPECT_EQ(moves(gaps), 3u);
  EXPECT_EQ(count_of(gaps, "<use xlink:href='#gpPt6' transform"), 5u);
}

TEST_F(Plot, SpectraComeFromThePack) {
  const std::string dot = "<use xlink:href='#gpPt6' transform";
  std::string picture = svg("plot_eigenvals(\"p.svg\", [0, 2; -2, 0]*1{Hz}, [3; 1i; 4]*1{Hz})");
  EXPECT_EQ(count_of(picture, dot), 5u + 2u);  // One more of each in the legend.
  EXPECT_NE(picture.find("imaginary part in Hz"), std::string::npos);
  picture = svg("plot_svds(\"p.svg\", [1, 0, 0; 0, 1e-9, 0; 0, 0, 0]*1{kN/m})");
  EXPECT_NE(picture.find("singular value in kN/m"), std::string::npos);
  EXPECT_EQ(count_of(picture, dot), 2u);
  EXPECT_NE(picture.find("index (1 more: zero)"), std::string::npos);
  picture = svg("ORIGIN = 1\nheatmap(\"p.svg\", [1, 2, 0/0; -4, 5, 6]*1{kN/m}, \"stiffness\")");
  EXPECT_NE(picture.find("stiffness in kN/m"), std::string::npos);
  EXPECT_EQ(count_of(picture, " 0</tspan>"), 0u) << "rows and columns count from ORIGIN";
  // A single row, column or element is drawn too: as two of half the width.
  const std::pair<const char*, std::size_t> cells[] = {
      {"[1, 2, 4]", 6}, {"[1; 2; 4]", 6}, {"[4]", 4}, {"[1, 2; 0/0, 4]", 3}};
  for (const auto& [matrix, count] : cells) {
    const std::string group = "shape-rendering='crispEdges'";
    picture = svg(std::string("heatmap(\"p.svg\", ") + matrix + ")");
    const std::size_t begin = picture.find(group), end = picture.find(group, begin + 1);
    EXPECT_EQ(count_of(picture.substr(begin, end - begin), "<polygon"), count) << matrix;
  }
}

TEST_F(Plot, WhatCannotBeDrawnIsSaidAtTheArgument) {
  struct Case {
    const char* statement;
    const char* at;  // What the carets stand below.
    const char* message;
  };
  const Case cases[] = {
      {"plot(\"p.pdf\", [1, 2])", "\"p.pdf\"", "the file of a picture ends in .svg or .png"},
      {"plot(\"p.svg\")", "plot(\"p.svg\")", "there is nothing to draw"},
      {"plot(\"p.svg\", [1, 2], [1, 2i])", "[1, 2i]",
       "must be real: take abs, re or im of what is complex"},
      {"plot(\"p.svg\", [[1], 2])", "[[1], 2]", "may not be nested"},
      {"plot(\"p.svg\", [1, 2], [1, 2, 3])", "[1, 2, 3]", "has 3 points, its x 2"},
      {"plot([1, 2], [1, 2], [3, 4])", "[3, 4]", "curves are pairs x, y: this x has no y"},
      {"plot([1, 2]{s}, [1, 2], [1, 2]{m}, [1, 2])", "[1, 2]{m}",
       "one axis has one unit, not s and m"},
      {"plot([1, 2], \"a\", \"b\")", "\"b\"", "a name stands behind what it is to name"},
      {"plot([0/0, 1/0])", "[0/0, 1/0]", "has no point that can be drawn"},
      {"plot(\"none/p.svg\", 1)", "\"none/p.svg\"",
       "none/p.svg cannot be written: no such file or directory"},
      {"plot_eigenvals([1, 2; 3, 4; 5, 6])", "[1, 2; 3, 4; 5, 6]", "must be square"},
      {"heatmap(3)", "3", "must be a matrix"},
      {"plot_svds([0])", "[0]", "all singular values are zero: a logarithm has no place for them"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(sheet.shown(c.statement),
              fmt::format("error: {}\n    1 | {}\n{}{}\n", c.message, c.statement,
                          std::string(8 + std::string(c.statement).find(c.at), ' '),
                          std::string(std::strlen(c.at), '^')));
  EXPECT_EQ(directory.names(), std::vector<std::string>());
}

TEST_F(Plot, OneStatementDrawsABoundedNumber) {
  EXPECT_TRUE(sheet.shown("for k = 1:1e9\n  plot([k, 1])\nend")
                  .starts_with("error: one statement may draw 1000 pictures, no more\n"));
}

TEST_F(Plot, PngFilesHoldPictures) {
  sheet.run("plot(\"p.PNG\", [1, 3, 2])\nplot(\"p.PNG\", [1, 3, 1])");
  EXPECT_EQ(directory.read("p.PNG").substr(0, 8), "\x89PNG\r\n\x1A\n");
  EXPECT_EQ(directory.names(), std::vector<std::string>({"p.PNG"}));
}

TEST_F(Plot, WithoutGnuplotTheStatementSaysWhatIsMissing) {
  const std::string sheet = directory.write("s.ws", "plot(\"p.svg\", [1, 2])\nplot([1, 2])\n");
  const std::string path = std::getenv("PATH");
  setenv("PATH", "/nonexistent", 1);
  const ProgramRun run = run_program({sheet});
  setenv("PATH", path.c_str(), 1);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out,
            "error: there is no gnuplot to draw with: install the Debian package gnuplot-nox\n"
            "    1 | plot(\"p.svg\", [1, 2])\n        ^^^^^^^^^^^^^^^^^^^^^\n"
            "plot([1, 2]) = picture (1 curve)\n");
  EXPECT_EQ(directory.names(), std::vector<std::string>({"s.ws"}));
}

// A program of its own that evaluates a worksheet, and a gnuplot that never ends.
class Endless {
 public:
  Endless() {
    const std::string pid = directory.path("pid");
    const std::string script =
        directory.write("gnuplot", fmt::format("#!/bin/sh\necho $$ >'{0}.new'\nmv '{0}.new' '{0}'\n"
                                               "exec /bin/sleep 1000\n",
                                               pid));
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    directory.write("r.html", "the old report");
    const std::string sheet = directory.write("s.ws", "1\nplot(\"p.svg\", [1, 2])\n2\n");
    program_ = fork();
    if (program_ == 0) {
      std::freopen("/dev/null", "w", stdout);
      setenv("PATH", (directory.path("") + ":/usr/bin:/bin").c_str(), 1);
      setenv("WORKSHEET_CATALOGUE", "/nonexistent/packs.json", 1);
      execl(kWorksheet, "worksheet", "--html", directory.path("r.html").c_str(), sheet.c_str(),
            static_cast<char*>(nullptr));
      _exit(127);
    }
    while (!std::filesystem::exists(pid) && waitpid(program_, nullptr, WNOHANG) == 0)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    gnuplot_ = std::atoi(directory.read("pid").c_str());
  }
  ~Endless() {
    if (gnuplot_ > 1) kill(gnuplot_, SIGKILL);
  }

  // The status with which the program ends after the signal.
  int end(int signal) {
    int status = -1;
    kill(program_, signal);
    EXPECT_EQ(waitpid(program_, &status, 0), program_);
    return status;
  }
  // The status of a gnuplot that the program left behind.
  int end_of_gnuplot() const {
    int status = 0;
    waitpid(gnuplot_, &status, 0);
    return status;
  }
  bool gnuplot_runs() const { return gnuplot_ > 1 && kill(gnuplot_, 0) == 0; }

  Directory directory;

 private:
  pid_t program_ = -1, gnuplot_ = -1;
};

TEST_F(Plot, AnInterruptionKillsGnuplotAndEndsTheReport) {
  Endless endless;
  ASSERT_TRUE(endless.gnuplot_runs());
  const int status = endless.end(SIGINT);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_FALSE(endless.gnuplot_runs());
  const std::string report = endless.directory.read("r.html");
  EXPECT_NE(report.find("2 statements"), std::string::npos);
  EXPECT_NE(report.find("was interrupted"), std::string::npos);
  EXPECT_EQ(endless.directory.names(),
            std::vector<std::string>({"gnuplot", "pid", "r.html", "s.ws"}));
}

TEST_F(Plot, AProgramThatIsKilledLeavesNothingBehind) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);  // What it leaves behind becomes ours.
  Endless endless;
  ASSERT_TRUE(endless.gnuplot_runs());
  EXPECT_TRUE(WIFSIGNALED(endless.end(SIGKILL)));
  EXPECT_TRUE(WIFSIGNALED(endless.end_of_gnuplot()));
  EXPECT_EQ(endless.directory.read("r.html"), "the old report");
  EXPECT_EQ(endless.directory.names(),
            std::vector<std::string>({"gnuplot", "pid", "r.html", "s.ws"}));
}

}  // namespace
