// The interpreter of the notebook kernel in this process, without sockets: what it would send, and
// its replies. kernel_client.py tries the program.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <set>
#include <thread>

#include "host/kernel/interpreter.hpp"
#include "host/kernel/kernel_signals.hpp"

namespace {

using nlohmann::json;

class Kernel : public testing::Test {
 protected:
  struct Message {
    std::string type;
    json content;
  };

  Kernel() {
    worksheet_kernel::hold_signals();
    kernel_.register_publisher(
        [this](const std::string& type, const json&, const json& content, const auto&) {
          if (type != "execute_input") sent_.push_back({type, content});
        });
  }

  // The reply to a cell; sent_ holds its outputs.
  json run(const std::string& code, bool silent = false) {
    sent_.clear();
    return kernel_.execute_request(code, silent, true, json::object(), false);
  }
  std::string status(const std::string& code) { return run(code)["status"]; }
  // The types of its outputs.
  std::string types() const {
    std::string words;
    for (const Message& message : sent_) words += message.type + " ";
    return words;
  }
  // A form of an output of the last cell; empty if it has none.
  std::string form(std::size_t output, const std::string& mime) const {
    return output < sent_.size() ? sent_[output].content["data"].value(mime, "") : "no output";
  }

  std::vector<std::string> packs_{MATRIX_PACK};
  worksheet_kernel::Interpreter kernel_{packs_};
  std::vector<Message> sent_;
};

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(Kernel, ShowsEachStatementOfACell) {
  EXPECT_EQ(status("A = [1, 2; 3, 4]{kN}\nx = 3;\nf(x) = x + 1\nf(1)"), "ok");
  EXPECT_EQ(types(), "display_data execute_result ");
  EXPECT_TRUE(has(form(0, "text/html"), "<mtable")) << form(0, "text/html");
  EXPECT_EQ(form(1, "text/plain"), "2");
  EXPECT_EQ(run("1 + 1\nno_such_name", true)["status"], "error");
  EXPECT_EQ(types(), "") << "a silent cell shows nothing";
  run("format fix 2\n1/3");
  ASSERT_FALSE(sent_.empty());
  const std::string markup = form(sent_.size() - 1, "text/html");
  EXPECT_TRUE(has(markup, "0.33<")) << markup;
  EXPECT_EQ(status("help lsolve"), "ok");
  EXPECT_TRUE(has(form(0, "text/markdown"), "### ")) << form(0, "text/markdown");
}

TEST_F(Kernel, RemarksStandBesideTheValue) {
  status("rref([0.1, 0.7, 0.3; 0.3, 2.1, 0.9]*1000)");
  const std::string markup = form(0, "text/html");
  EXPECT_TRUE(has(markup, "<aside class=\"trust warning\">")) << markup;
  EXPECT_TRUE(has(markup, "<mtable")) << markup;
  status("x = rref([0.1, 0.7, 0.3; 0.3, 2.1, 0.9]*1000);");
  EXPECT_TRUE(has(form(0, "text/html"), "<aside")) << "a quiet statement warns too";
  EXPECT_FALSE(has(form(0, "text/html"), "<mtable")) << "and keeps its value to itself";
}

TEST_F(Kernel, StopsAtTheFirstErrorAndSaysWhere) {
  EXPECT_EQ(status("g(x) = length(x)\nA = [1, 2; 3, 4]"), "ok");
  const json reply = run("1\ng(A)\n2");
  EXPECT_EQ(types(), "display_data error ");
  EXPECT_EQ(reply["status"], "error");
  EXPECT_TRUE(has(reply["traceback"].dump(), "In [1]:")) << reply;
  EXPECT_TRUE(has(reply["traceback"].dump(), "^^^^")) << reply;
  EXPECT_EQ(run("1 +")["ename"], "syntax");
}

TEST_F(Kernel, PicturesOfACellHaveNamesAndColoursOfTheirOwn) {
  EXPECT_EQ(status("plot([1, 2, 3])\nplot([1, 3, 2])"), "ok");
  ASSERT_EQ(sent_.size(), 2u);
  std::set<std::string> names;
  for (std::size_t k = 0; k < 2; ++k) {
    const std::string svg = form(k, "text/html");
    EXPECT_TRUE(has(svg, "<svg") && !has(svg, "var(--")) << "the page has no colours for it";
    const std::size_t at = svg.find("id=\"");
    ASSERT_NE(at, std::string::npos);
    EXPECT_TRUE(names.insert(svg.substr(at, svg.find('"', at + 4) - at)).second) << svg;
  }
}

TEST_F(Kernel, CompletesAndInspectsAtTheCursor) {
  struct Case {
    const char* code;
    int cursor, start;  // In characters, not bytes.
    const char* match;
  };
  const Case cases[] = {{"\u00fcx = 3{kilom", 12, 7, "kilometre"},
                        {"\u00fc\u00fc = lso + 1", 8, 5, "lsolve"},
                        {"whi", 3, 0, "while"},
                        {"whi", 99, 0, "while"}};
  for (const Case& c : cases) {
    const json reply = kernel_.complete_request(c.code, c.cursor);
    EXPECT_TRUE(has(reply["matches"].dump(), std::string("\"") + c.match + '"')) << c.code;
    EXPECT_EQ(reply["cursor_start"], c.start) << c.code;
  }
  EXPECT_EQ(kernel_.inspect_request("lsolve(A", 3, 0)["found"], true);
  EXPECT_EQ(kernel_.inspect_request("  ", 1, 0)["found"], false);
  const std::array<std::pair<const char*, const char*>, 4> forms = {{{"[1, 2;\n", "incomplete"},
                                                                     {"for k = 1:3", "incomplete"},
                                                                     {"x = 1", "complete"},
                                                                     {"1 +", "complete"}}};
  for (const auto& [code, answer] : forms)
    EXPECT_EQ(kernel_.is_complete_request(code)["status"], answer) << code;
}

TEST_F(Kernel, AnInterruptEndsACellAndNothingElse) {
  EXPECT_EQ(status("A = 7;"), "ok");
  kill(getpid(), SIGINT);  // While idle: it waits, and is dropped.
  EXPECT_EQ(status("2 * 21"), "ok");
  std::thread user([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    kill(getpid(), SIGINT);
  });
  const json reply = run("for k = 1:1e9; B = k; end");
  user.join();
  EXPECT_EQ(reply.value("evalue", ""), "interrupted") << reply;
  EXPECT_EQ(status("A"), "ok");
  EXPECT_EQ(form(0, "text/plain"), "7");
}

}  // namespace
