// A worksheet of any text, evaluated with the pack of this build, and shown in every form.
#include <dlfcn.h>
#include <expat.h>
#include <sys/time.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/worksheet/output/display.hpp"
#include "host/worksheet/output/json_output.hpp"
#include "host/worksheet/report/report.hpp"
#include "host/worksheet/session/session.hpp"
#include "tests/fuzz/targets.hpp"
#include "tests/host/build_files.hpp"
#include "tests/support/allocation_faults.hpp"
#include "tests/support/fp_environment.hpp"

namespace fuzz {

namespace {

using worksheet::Machine;
using worksheet::Outcome;
using worksheet::Session;

// Larger arrays are refused as if memory were exhausted: no call of the pack takes long. The host's
// own tables fit.
constexpr std::size_t kLargestBlock = 1 << 18;

// Ends an evaluation as Ctrl-C does, when it has taken this long: a worksheet may ask for anything.
constexpr int kMostMicroseconds = 300'000;
Machine* under_way = nullptr;

void interrupt(int) {
  if (under_way != nullptr) under_way->interrupted = 1;
}

struct Interruption {
  explicit Interruption(Machine& machine) {
    under_way = &machine;
    std::signal(SIGVTALRM, interrupt);
    set(kMostMicroseconds);
  }
  ~Interruption() {
    set(0);
    under_way = nullptr;
  }
  static void set(int microseconds) {
    const itimerval timer = {{0, 0}, {0, microseconds}};
    setitimer(ITIMER_VIRTUAL, &timer, nullptr);
  }
};

// A worksheet may draw into files anywhere: while it lives, no program is found that draws.
class NoPrograms {
 public:
  NoPrograms() {
    if (const char* path = std::getenv("PATH")) path_ = path;
    setenv("PATH", "/nonexistent", 1);
  }
  ~NoPrograms() { setenv("PATH", path_.c_str(), 1); }
  NoPrograms(const NoPrograms&) = delete;
  NoPrograms& operator=(const NoPrograms&) = delete;

 private:
  std::string path_ = "/usr/bin:/bin";
};

// What a worksheet gives, and the first rule that was broken meanwhile.
struct Evaluation {
  std::string json;
  std::string complaint;
  bool interrupted = false;

  void expect(bool fulfilled, const std::string& otherwise) {
    if (!fulfilled && complaint.empty()) complaint = otherwise;
  }
};

// Why the page is no well-formed XML in UTF-8; empty if it is.
std::string fault_of_page(const std::string& page) {
  const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate("UTF-8"),
                                                                       XML_ParserFree);
  if (XML_Parse(parser.get(), page.data(), static_cast<int>(page.size()), 1) == XML_STATUS_OK)
    return "";
  const auto at = static_cast<std::size_t>(XML_GetCurrentByteIndex(parser.get()));
  return std::string("a page with ") + XML_ErrorString(XML_GetErrorCode(parser.get())) + ": " +
         page.substr(at - std::min<std::size_t>(at, 100), 200);
}

void note(const Machine& machine, const Outcome& outcome, int lines, Evaluation& evaluation) {
  const test::AllocationFaults none;
  std::ostringstream json, text;
  worksheet::write_outcome(json, outcome, false);
  const std::string line = json.str();
  evaluation.json += line;
  evaluation.expect(line.find('\n') == line.size() - 1, "JSON of other than a line");
  evaluation.expect(nlohmann::json::accept(line), "no JSON: " + line);
  worksheet::show_outcome(text, outcome, {});
  const std::string shown = text.str();
  evaluation.expect(shown.empty() || shown.back() == '\n', "shown without a last newline");
  evaluation.expect(!outcome.failed() || !shown.empty(), "an error that is not shown");
  evaluation.expect(outcome.line >= 1 && outcome.line <= std::max(lines, 1),
                    "an outcome on line " + std::to_string(outcome.line));
  if (outcome.is_syntax_error()) {
    evaluation.expect(outcome.column >= 1, "a syntax error without a column");
    evaluation.expect(outcome.offset <= outcome.source->text.size(), "a place behind the text");
  }
  evaluation.expect(machine.evaluator.depth() == 0, "left the evaluator bracket open");
  for (const std::string& said : machine.evaluator.complaints)
    evaluation.expect(false, "the pack " + said);
}

// The floating-point environment without status flags: the application's own arithmetic raises
// them.
std::vector<std::uint32_t> control_words() {
  _clearfp();
  return test::fp_environment();
}

Evaluation evaluate(const std::string& text) {
  // Kept: a library that stays loaded is opened quickly.
  static void* const pack = dlopen(test::kPackFile, RTLD_NOW);
  Evaluation evaluation;
  if (pack == nullptr) return {{}, "no pack"};
  const auto lines = static_cast<int>(std::count(text.begin(), text.end(), '\n')) + 1;
  worksheet::Report report("fuzz", {});
  report.begin_text(text);
  Session session([&](const Outcome& outcome) {
    note(session.machine(), outcome, lines, evaluation);
    const test::AllocationFaults none;
    report.add(outcome);
  });
  Machine& machine = session.machine();
  machine.files.directory = "/nonexistent";
  machine.add_pack(std::make_unique<worksheet::Pack>(test::kPackFile));
  const NoPrograms no_programs;
  const auto environment = control_words();
  {
    const test::AllocationFaults faults(0, test::Failing::once, kLargestBlock);
    const Interruption interruption(machine);
    std::istringstream in(text);
    session.run_text(in);
  }
  evaluation.interrupted = machine.interrupted != 0;
  if (!evaluation.interrupted) report.end_text();
  const std::string fault = fault_of_page(report.page(evaluation.interrupted));
  evaluation.expect(fault.empty(), fault);
  evaluation.expect(control_words() == environment, "changed the floating-point environment");
  return evaluation;
}

}  // namespace

std::string check_worksheet(Bytes input) {
  const std::string text(input.begin(), input.end());
  const Evaluation first = evaluate(text);
  if (!first.complaint.empty() || first.interrupted) return first.complaint;
  const Evaluation second = evaluate(text);
  if (!second.complaint.empty() || second.interrupted) return second.complaint;
  return first.json == second.json ? "" : "gave\n" + first.json + "and then\n" + second.json;
}

}  // namespace fuzz
