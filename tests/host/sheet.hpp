// Worksheets in tests: evaluated in this process, or by the program.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "host/worksheet/output/display.hpp"
#include "host/worksheet/session/session.hpp"

namespace test {

// Tests that look into it include <nlohmann/json.hpp>, which takes seconds to compile.
using Json = nlohmann::ordered_json;

// A worksheet evaluated in this process with the pack of this build.
class Sheet {
 public:
  Sheet();
  ~Sheet();

  worksheet::Machine& machine() { return session_.machine(); }
  worksheet::Session& session() { return session_; }

  // The outcomes of the statements of `text`, until it runs others.
  const std::vector<Json>& run(const std::string& text);
  // The value of its last statement, as JSON.
  std::string value(const std::string& text);
  // The same as short text: "1.5", "1+2i", "[1 2; 3 4]", "\"text\"", "error: message (arg 1)".
  std::string brief(const std::string& text);
  // Of all outcomes of the last text, "line: value" with " quiet" behind it where that is so.
  std::string briefs() const;
  // A member of the last outcome, or of another, by its pointer ("/value/message"), as text; of
  // what is not there, none.
  std::string member(const std::string& pointer) const;
  std::string member(std::size_t outcome, const std::string& pointer) const;
  // The text of the last outcome as people see it.
  std::string shown(const std::string& text, const worksheet::DisplayOptions& options = {});

 private:
  worksheet::Session session_;
  std::vector<Json> outcomes_;
  worksheet::DisplayOptions options_;
  std::string shown_;
};

std::string brief_text(const Json& value);

// What a shell prints, errors among it, that runs `commands`, and does so with success.
std::string shell(const std::string& commands);

// A directory of its own for one test, removed at its end.
class Directory {
 public:
  Directory();
  ~Directory();
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  std::string path(const std::string& name) const { return (path_ / name).string(); }
  // Writes a file; gives its path.
  std::string write(const std::string& name, const std::string& content) const;
  std::string read(const std::string& name) const;
  // The names of all files in it, in order.
  std::vector<std::string> names() const;

 private:
  std::filesystem::path path_;
};

// A test with a worksheet of its own, which reads and writes files in a directory of its own.
class InSheet : public ::testing::Test {
 protected:
  InSheet() { sheet.machine().files.directory = directory.path(""); }
  // Expects each text to have that value, in brief.
  void expect(std::initializer_list<std::pair<std::string, const char*>> cases);

  Directory directory;
  Sheet sheet;
};

// What a run of the program gave.
struct ProgramRun {
  std::string out;
  std::string err;
  int status;  // The negated signal that ended it, if one did.

  // The lines of standard output as JSON.
  std::vector<Json> json() const;
  // A member of a line; see Sheet.
  std::string member(std::size_t line, const std::string& pointer) const;
};

// What the system lets a run of the program have.
struct Limits {
  rlim_t memory = RLIM_INFINITY;  // Bytes of addresses.
  rlim_t stack = RLIM_INFINITY;   // Bytes.
  rlim_t file_size = RLIM_INFINITY;
  rlim_t seconds = 120;  // Of the processor.
};

// Runs the program with the arguments; `input` is its standard input. Its catalogue is
// `catalogue`, by default an empty one.
ProgramRun run_program(const std::vector<std::string>& arguments, const std::string& input = "",
                       const std::string& catalogue = "/nonexistent/packs.json",
                       const Limits& limits = {});

}  // namespace test
