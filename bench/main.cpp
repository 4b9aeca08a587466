// Runs the contests: verifies that the contenders agree, times them in turns, and prints one table.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <regex>

#include "bench/audit.hpp"
#include "bench/bench.hpp"
#include "bench/limit.hpp"
#include "bench/peers/lapack.hpp"
#include "bench/peers/peers.hpp"
#include "host/efiutils/fault_translation.hpp"
#include "pack/numeric/kernel_sets.hpp"

namespace bench {

namespace {

struct Family {
  std::string function;
  std::function<Contest(int)> make;
  std::vector<int> sizes;
};

std::vector<Family>& families() {
  static std::vector<Family> all;
  return all;
}

using Clock = std::chrono::steady_clock;

// Calls timed together take about this long, so that reading the clock does not count.
constexpr double kBatchSeconds = 50e-6;
constexpr int kLargestBatch = 200;
// A contender's share of a contest.
constexpr double kSeconds = 0.4;
constexpr double kQuickSeconds = 0.05;
constexpr int kFewestRounds = 5;
constexpr int kQuickRounds = 3;
constexpr int kMostRounds = 200;
constexpr int kQuickLargest = 300;

constexpr const char* kNames[] = {"core", "handler", "OpenBLAS", "BLIS", "Eigen"};
constexpr std::size_t kContenders = std::size(kNames);
constexpr std::size_t kFirstPeer = 2;
constexpr std::size_t kBlis = 3;

struct Timing {
  explicit Timing(Contender* c, Blas b = Blas::openblas) : contender(c), blas(b) {}

  Contender* contender;
  Blas blas;  // Which one LAPACK uses.
  bool absent = false;
  int batch = 1;
  std::vector<double> seconds;  // Of one call, in each round.

  bool takes_part() const { return contender->run != nullptr && !absent; }

  double once() {
    use(blas);
    contender->prepare(batch);
    const auto start = Clock::now();
    for (int i = 0; i < batch; ++i) contender->run(i);
    return std::chrono::duration<double>(Clock::now() - start).count() / batch;
  }

  std::optional<double> median() {
    if (seconds.empty()) return std::nullopt;
    const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
    std::nth_element(seconds.begin(), middle, seconds.end());
    return *middle;
  }
};

struct Row {
  std::string function;
  int n;
  std::optional<double> seconds[kContenders];
  std::string mistake;  // Empty when the contenders agree.

  std::optional<double> least;  // What the machine's limits allow.

  // Ours by the time of the fastest peer.
  std::optional<double> ratio(std::size_t ours) const {
    double fastest = HUGE_VAL;
    for (std::size_t c = kFirstPeer; c < kContenders; ++c)
      fastest = std::min(fastest, seconds[c].value_or(HUGE_VAL));
    if (!seconds[ours] || fastest == HUGE_VAL) return std::nullopt;
    return *seconds[ours] / fastest;
  }
};

// Empty, or how two contenders differ.
std::string disagreement(Timing (&timings)[kContenders], double tolerance) {
  Numbers expected;
  const char* by = nullptr;
  for (std::size_t c = 0; c < kContenders; ++c) {
    if (!timings[c].takes_part()) continue;
    timings[c].once();  // Two of the contenders share their arrays.
    const Numbers found = timings[c].contender->result();
    if (by == nullptr) {
      expected = found;
      by = kNames[c];
      if (expected.empty()) return fmt::format("{} has no result", by);
      continue;
    }
    if (found.size() != expected.size())
      return fmt::format("{} gives {} numbers and {} {}", by, expected.size(), kNames[c],
                         found.size());
    double largest = 0, worst = 0;
    for (std::size_t k = 0; k < found.size(); ++k) {
      largest = std::max(largest, std::fabs(expected[k]));
      const double difference = std::fabs(found[k] - expected[k]);
      if (!(difference <= worst)) worst = difference;
    }
    if (!(worst <= tolerance * largest))
      return fmt::format("{} and {} differ by {:.2g} of {:.2g}", by, kNames[c], worst, largest);
  }
  return "";
}

Row hold(const Family& family, int n, bool quick, bool with_blis) {
  Row row = {family.function, n, {}, "", {}};
  Contest contest = family.make(n);
  Timing timings[kContenders] = {Timing(&contest.core), Timing(&contest.handler),
                                 Timing(&contest.lapack), Timing(&contest.lapack, Blas::blis),
                                 Timing(&contest.eigen)};
  timings[kBlis].absent = !with_blis;
  double slowest = 0;
  for (Timing& t : timings) {
    if (!t.takes_part()) continue;
    t.once();
    const double seconds = std::max(t.once(), 1e-9);
    slowest = std::max(slowest, seconds);
    t.batch = static_cast<int>(std::clamp(kBatchSeconds / seconds, 1.0, double{kLargestBatch}));
  }
  row.mistake = disagreement(timings, contest.tolerance);
  const double round = std::max(slowest, kBatchSeconds);
  const int rounds = std::clamp(static_cast<int>((quick ? kQuickSeconds : kSeconds) / round),
                                quick ? kQuickRounds : kFewestRounds, kMostRounds);
  for (int r = 0; r < rounds; ++r)
    for (Timing& t : timings)
      if (t.takes_part()) t.seconds.push_back(t.once());
  for (std::size_t c = 0; c < kContenders; ++c) row.seconds[c] = timings[c].median();
  return row;
}

std::string readable(std::optional<double> seconds) {
  if (!seconds) return "-";
  if (*seconds < 1e-6) return fmt::format("{:.0f} ns", *seconds * 1e9);
  if (*seconds < 1e-3) return fmt::format("{:.2f} us", *seconds * 1e6);
  if (*seconds < 1) return fmt::format("{:.2f} ms", *seconds * 1e3);
  return fmt::format("{:.2f} s", *seconds);
}

std::string readable_ratio(std::optional<double> ratio) {
  return ratio ? fmt::format("{:.2f}", *ratio) : "-";
}

void print(const Row& row) {
  fmt::print("{:<18} {:>5}", row.function, row.n);
  for (const auto& seconds : row.seconds) fmt::print(" {:>10}", readable(seconds));
  fmt::print(" {:>10} {:>8} {:>8}\n", readable(row.least), readable_ratio(row.ratio(0)),
             readable_ratio(row.ratio(1)));
  if (!row.mistake.empty()) fmt::print("  WRONG: {}\n", row.mistake);
  std::fflush(stdout);
}

nlohmann::json as_json(const Row& row) {
  nlohmann::json j = {{"function", row.function}, {"n", row.n}};
  for (std::size_t c = 0; c < kContenders; ++c)
    j[kNames[c]] = row.seconds[c] ? nlohmann::json(*row.seconds[c]) : nlohmann::json();
  for (const std::size_t ours : {0u, 1u}) {
    const auto ratio = row.ratio(ours);
    j[std::string(kNames[ours]) + " ratio"] = ratio ? nlohmann::json(*ratio) : nlohmann::json();
  }
  j["limit"] = row.least ? nlohmann::json(*row.least) : nlohmann::json();
  if (!row.mistake.empty()) j["mistake"] = row.mistake;
  return j;
}

struct Options {
  bool json = false;
  bool quick = false;
  std::string filter = ".*";
  std::vector<int> sizes;
  std::string set;
};

bool choose_set(const std::string& name) {
  using matrix_pack::KernelSet;
  for (const KernelSet set : {KernelSet::baseline, KernelSet::v3, KernelSet::v4})
    if (name == matrix_pack::kernel_set_name(set)) return matrix_pack::force_kernel_set(set);
  return false;
}

// Exit status 1 when some contenders disagree.
int run(const Options& options) {
  const char* const set = matrix_pack::kernel_set_name(matrix_pack::kernel_set());
  const bool with_blis = load_blis();
  const Machine machine = measure_machine();
  nlohmann::json report = {{"kernel set", set},
                           {"peers", peers(with_blis)},
                           {"operations a second", machine.operations},
                           {"bytes a second", machine.bandwidths.front().rate}};
  report["rows"] = nlohmann::json::array();
  if (!options.json) {
    fmt::print("Kernel set {}. Peers: {}. One thread. Medians; ratios to the fastest peer.\n", set,
               peers(with_blis));
    fmt::print("Limits: {:.1f} billion operations and {:.1f} GB a second.\n",
               machine.operations / 1e9, machine.bandwidths.front().rate / 1e9);
    fmt::print("{:<18} {:>5}", "function", "n");
    for (const char* name : kNames) fmt::print(" {:>10}", name);
    fmt::print(" {:>10} {:>8} {:>8}\n", "limit", "core", "handler");
  }
  int status = 0;
  const std::regex filter(options.filter);
  for (const Family& family : families()) {
    if (!std::regex_search(family.function, filter)) continue;
    for (const int n : options.sizes.empty() ? family.sizes : options.sizes) {
      if (options.quick && options.sizes.empty() && n > kQuickLargest) continue;
      Row row = hold(family, n, options.quick, with_blis);
      row.least = limit(machine, family.function, n);
      if (!row.mistake.empty()) status = 1;
      if (options.json)
        report["rows"].push_back(as_json(row));
      else
        print(row);
    }
  }
  report["audit"] = nlohmann::json::array();
  time_audit(filter, options.sizes, options.quick, options.json ? &report["audit"] : nullptr);
  if (options.json) fmt::print("{}\n", report.dump(2));
  return status;
}

}  // namespace

bool add(std::string function, std::function<Contest(int)> make, std::vector<int> sizes) {
  families().push_back({std::move(function), std::move(make), std::move(sizes)});
  return true;
}

}  // namespace bench

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "--probe") return bench::probe();
  bench::choose_core_type(argv);
  CLI::App app("Times the pack beside LAPACK on OpenBLAS and on BLIS, and Eigen, on one thread.");
  bench::Options options;
  app.add_flag("--json", options.json, "Print JSON, times in seconds");
  app.add_flag("--quick", options.quick, "Fewer rounds, and sizes up to 300");
  app.add_option("--filter", options.filter, "Only functions whose name this pattern finds");
  app.add_option("--size", options.sizes, "Only these sizes");
  app.add_option("--set", options.set, "Use the kernel set baseline, v3 or v4");
  CLI11_PARSE(app, argc, argv);
  if (!options.set.empty() && !bench::choose_set(options.set)) {
    fmt::print(stderr, "This processor does not run the kernel set {}.\n", options.set);
    return 2;
  }
  efi::install_fault_translation();
  bench::use_one_thread();
  return bench::run(options);
}
