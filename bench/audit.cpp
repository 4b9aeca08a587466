#include "bench/audit.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <sstream>
#include <string>

#include "host/worksheet/session/session.hpp"

namespace bench {

namespace {

constexpr const char* kStatements[] = {
    "lsolve(A, b)",  "A^-1",          "lu(A)",    "cholesky(P)",  "qr(A)",        "rref(A)",
    "rank(A)",       "geninv(A)",     "norm1(A)", "normi(A)",     "norme(A)",     "norm2(A)",
    "cond1(A)",      "conde(A)",      "cond2(A)", "eigenvals(A)", "eigenvals(S)", "eigenvecs(A)",
    "genvals(A, B)", "genvecs(A, B)", "svd(A)",   "svds(A)"};

constexpr int kRounds = 9;
constexpr int kQuickRounds = 3;
// Statements timed together take about this long.
constexpr double kBatchSeconds = 4e-3;
constexpr int kLargestBatch = 400;

class Sheet {
 public:
  explicit Sheet(int n) : session_([](const worksheet::Outcome&) {}) {
    session_.machine().add_pack(std::make_unique<worksheet::Pack>(MATRIX_PACK));
    std::istringstream text(fmt::format(
        "f(i, j) = sin(3.1 * i * j + i + 2 * j) + if(i == j, 4, 0)\n"
        "A = matrix({0}, {0}, f)\nS = A + A'\nP = S * S\nB = A * A'\nb = matrix({0}, 1, f)\n",
        n));
    session_.run_text(text);
  }

  // The processor's seconds for one of `count` statements.
  double seconds(const worksheet::Source& source, int count, audit::Effort effort) {
    session_.machine().trust.effort = effort;
    const std::clock_t start = std::clock();
    for (int i = 0; i < count; ++i) session_.run(source);
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / count;
  }

  bool failed() const { return session_.failed(); }

 private:
  worksheet::Session session_;
};

struct Cost {
  double plain, check;  // Seconds.
};

// The medians of rounds in which the two ways take turns.
Cost cost(const std::string& statement, int n, bool quick) {
  Sheet sheet(n);
  const worksheet::Source source = {.text = statement};
  sheet.seconds(source, 1, audit::Effort::on);
  const double once = std::max(sheet.seconds(source, 1, audit::Effort::on), 1e-9);
  const int count = static_cast<int>(std::clamp(kBatchSeconds / once, 1.0, double{kLargestBatch}));
  std::vector<double> plain, added;
  for (int round = 0; round < (quick ? kQuickRounds : kRounds); ++round) {
    plain.push_back(sheet.seconds(source, count, audit::Effort::off));
    added.push_back(sheet.seconds(source, count, audit::Effort::on) - plain.back());
  }
  const auto median = [](std::vector<double>& x) {
    const auto middle = x.begin() + static_cast<std::ptrdiff_t>(x.size() / 2);
    std::nth_element(x.begin(), middle, x.end());
    return *middle;
  };
  if (sheet.failed()) throw std::runtime_error(statement + " failed");
  return {median(plain), median(added)};
}

std::string cell(const Cost& cost) {
  return fmt::format("{:.0f} us, {:.2f}", std::max(cost.check, 0.0) * 1e6,
                     std::max(cost.check, 0.0) / cost.plain);
}

}  // namespace

void time_audit(const std::regex& filter, std::vector<int> sizes, bool quick,
                nlohmann::json* json) {
  if (sizes.empty()) sizes = {3, 10, 30, 100, 300};
  bool is_first = true;
  for (const std::string statement : kStatements) {
    if (!std::regex_search("audit " + statement, filter)) continue;
    if (is_first && json == nullptr) {
      fmt::print(
          "\nWhat the audit adds, and that against the statement without it:\n| statement |");
      for (const int n : sizes) fmt::print(" {} |", n);
      fmt::print("\n|---|");
      for (std::size_t k = 0; k < sizes.size(); ++k) fmt::print("--:|");
      fmt::print("\n");
    }
    is_first = false;
    std::string line = fmt::format("| `{}` |", statement);
    for (const int n : sizes) {
      const Cost found = cost(statement, n, quick);
      line += fmt::format(" {} |", cell(found));
      if (json != nullptr)
        json->push_back(
            {{"statement", statement}, {"n", n}, {"plain", found.plain}, {"check", found.check}});
    }
    if (json == nullptr) fmt::print("{}\n", line);
    std::fflush(stdout);
  }
}

}  // namespace bench
