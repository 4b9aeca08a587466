#include "tests/host/sheet.hpp"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "fmt/format.h"
#include "host/worksheet/output/json_output.hpp"
#include "tests/host/build_files.hpp"

namespace test {

namespace fs = std::filesystem;

Sheet::Sheet()
    : session_([this](const worksheet::Outcome& outcome) {
        std::stringstream json, text;
        worksheet::write_outcome(json, outcome, options_.all);
        outcomes_.push_back(Json::parse(json));
        worksheet::show_outcome(text, outcome, options_);
        shown_ = text.str();
      }) {
  machine().add_pack(std::make_unique<worksheet::Pack>(kPackFile));
}

Sheet::~Sheet() = default;

const std::vector<Json>& Sheet::run(const std::string& text) {
  outcomes_.clear();
  std::istringstream lines(text);
  session_.run_text(lines);
  return outcomes_;
}

std::string Sheet::value(const std::string& text) {
  run(text);
  return member("/value");
}

namespace {

std::string member_of(const std::vector<Json>& values, std::size_t k, const std::string& pointer) {
  const Json::json_pointer place(pointer);
  if (k >= values.size() || !values[k].contains(place)) return "";
  const Json& found = values[k].at(place);
  return found.is_string() ? found.get<std::string>() : found.dump();
}

}  // namespace

std::string Sheet::briefs() const {
  std::string text;
  for (const Json& outcome : outcomes_)
    text += fmt::format("{}: {}{}\n", outcome["line"].dump(), brief_text(outcome["value"]),
                        outcome.contains("quiet") ? " quiet" : "");
  return text;
}

std::string Sheet::member(const std::string& pointer) const {
  return member(outcomes_.size() - 1, pointer);
}

std::string Sheet::member(std::size_t outcome, const std::string& pointer) const {
  return member_of(outcomes_, outcome, pointer);
}

std::string ProgramRun::member(std::size_t line, const std::string& pointer) const {
  return member_of(json(), line, pointer);
}

std::string Sheet::brief(const std::string& text) {
  run(text);
  if (!outcomes_.empty()) return brief_text(outcomes_.back().at("value"));
  ADD_FAILURE() << "no outcome of " << text;
  return "";
}

std::string Sheet::shown(const std::string& text, const worksheet::DisplayOptions& options) {
  options_ = options;
  run(text);
  return shown_;
}

namespace {

std::string number_text(const Json& re, const Json& im) {
  auto part = [](const Json& x) {
    return x.is_string() ? x.get<std::string>() : fmt::format("{:.15g}", x.get<double>());
  };
  if (im == 0.0) return part(re);
  return fmt::format("{}{}{}i", part(re), im.is_number() && im < 0.0 ? "" : "+", part(im));
}

std::string matrix_text(const Json& value) {
  const int rows = value["rows"], cols = value["cols"];
  std::string text = "[";
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < cols; ++j) {
      const auto k = static_cast<std::size_t>(j * rows + i);
      const Json re = value["re"].is_null() ? Json(0.0) : value["re"][k];
      const Json im = value["im"].is_null() ? Json(0.0) : value["im"][k];
      text += j > 0 ? " " : i > 0 ? "; " : "";
      text += re.is_object() ? brief_text(re) : number_text(re, im);
    }
  if (value["re"].is_null()) text += value["im"].is_null() ? " lean" : " imaginary";
  if (!value["im"].is_null()) text += " complex";
  return text + "]";
}

}  // namespace

std::string brief_text(const Json& value) {
  const std::string kind = value["kind"];
  std::string text = kind;
  if (kind == "scalar") text = number_text(value["re"], value["im"]);
  if (kind == "matrix") text = matrix_text(value);
  if (kind == "string") text = fmt::format("\"{}\"", value["text"].get<std::string>());
  if (kind == "error")
    text = fmt::format("error: {} ({}, {})", value["message"].get<std::string>(),
                       value["mark"].get<int>(), value["arg"].get<int>());
  if (kind == "syntax")
    text = fmt::format("syntax: {} (column {})", value["message"].get<std::string>(),
                       value["column"].get<int>());
  if (value.contains("unit")) text += fmt::format(" {{{}}}", value["unit"].get<std::string>());
  return text;
}

void InSheet::expect(std::initializer_list<std::pair<std::string, const char*>> cases) {
  for (const auto& [text, value] : cases) EXPECT_EQ(sheet.brief(text), value) << text;
}

std::vector<Json> ProgramRun::json() const {
  std::vector<Json> lines;
  std::istringstream text(out);
  for (std::string line; std::getline(text, line);) lines.push_back(Json::parse(line));
  return lines;
}

namespace {

void limit(__rlimit_resource resource, rlim_t most) {
  rlimit limits;
  getrlimit(resource, &limits);
  limits.rlim_cur = std::min(most, limits.rlim_max);
  setrlimit(resource, &limits);
}

// What the child does until it is the program.
[[noreturn]] void become_program(const std::vector<std::string>& arguments, const Directory& files,
                                 const std::string& catalogue, const Limits& limits) {
  std::vector<char*> words = {const_cast<char*>(kWorksheet)};
  for (const std::string& argument : arguments)
    words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  setenv("WORKSHEET_CATALOGUE", catalogue.c_str(), 1);
  dup2(open(files.path("in").c_str(), O_RDONLY), STDIN_FILENO);
  dup2(open(files.path("out").c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
  dup2(open(files.path("err").c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
  limit(RLIMIT_CPU, limits.seconds);
  limit(RLIMIT_STACK, limits.stack);
  limit(RLIMIT_FSIZE, limits.file_size);
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_AS, limits.memory);
  execv(words[0], words.data());
  _exit(127);
}

}  // namespace

ProgramRun run_program(const std::vector<std::string>& arguments, const std::string& input,
                       const std::string& catalogue, const Limits& limits) {
  const Directory directory;
  directory.write("in", input);
  const pid_t child = fork();
  if (child == 0) become_program(arguments, directory, catalogue, limits);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return {directory.read("out"), directory.read("err"),
          WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status)};
}

std::string shell(const std::string& commands) {
  std::FILE* const pipe = popen(("exec 2>&1\n" + commands).c_str(), "r");
  std::string printed;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) printed += static_cast<char>(c);
  EXPECT_EQ(pclose(pipe), 0) << commands << "\n" << printed;
  return printed;
}

Directory::Directory() {
  std::string name = (fs::temp_directory_path() / "worksheet-test-XXXXXX").string();
  EXPECT_NE(mkdtemp(name.data()), nullptr);
  path_ = name;
}

Directory::~Directory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string Directory::write(const std::string& name, const std::string& content) const {
  std::ofstream(path(name), std::ios::binary) << content;
  return path(name);
}

std::string Directory::read(const std::string& name) const {
  std::ifstream file(path(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> Directory::names() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(path_)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace test
