// The pack under conditions of long use: several threads, a small stack and many calls.
#include <algorithm>
#include <cstdlib>
#include <thread>

#include "tests/support/call_corpus.hpp"
#include "tests/support/platform.hpp"
#include "tests/support/sanitized.hpp"

namespace {

using namespace test;

using Results = std::vector<std::uint64_t>;

// The results of all calls of a corpus of its own, and so of a context of its own.
Results all_results() {
  CallCorpus corpus;
  Results results;
  for (const Call& call : corpus.calls())
    results.push_back(calls::bits_of(corpus.host.store(), call.run()));
  return results;
}

// Gaps between the columns of an argument change nothing.
TEST(Robustness, AnyLeadingDimensionGivesTheSameBits) {
  CallCorpus corpus;
  const auto outcome = [&](const Anyval* value) {
    return calls::bits_of(corpus.host.store(), value);
  };
  for (const calls::Function& function : corpus.functions)
    for (const char* name : {"real", "complex", "imaginary", "definite"})
      for (const auto& [rows, cols] :
           {std::pair{2, 2}, {5, 5}, {19, 19}, {70, 70}, {5, 3}, {3, 5}}) {
        if (function.name == "matrix" || function.name.starts_with("identity")) continue;
        const auto kind =
            std::ranges::find(arguments::kinds(), std::string_view(name), &arguments::Kind::name);
        if (kind->square && rows != cols) continue;
        arguments::Recipe recipe = arguments::recipe(*kind, rows, cols);
        const auto make = [&] {
          return static_cast<aMatrix*>(arguments::make(corpus.host.store(), recipe));
        };
        calls::Arguments arguments = corpus.arguments_of(function.name, make());
        const auto expected = outcome(function.call(arguments));
        recipe.gap = 3;
        arguments[0] = make();
        EXPECT_EQ(outcome(function.call(arguments)), expected) << function.name << ' ' << name;
      }
}

TEST(Robustness, ThreadsWithContextsOfTheirOwnGetTheSameBits) {
  const Results serial = all_results();
  constexpr int kThreads = 4;
  std::vector<Results> results(kThreads);
  std::vector<std::thread> threads;
  for (Results& own : results) threads.emplace_back([&own] { own = all_results(); });
  for (std::thread& thread : threads) thread.join();
  CallCorpus corpus;
  const std::vector<Call> calls = corpus.calls();
  for (const Results& own : results)
    for (std::size_t k = 0; k < calls.size(); ++k) EXPECT_EQ(own[k], serial[k]) << calls[k].name;
}

TEST(Robustness, EveryFunctionRunsOnASmallStack) {
  static Results results;
  ASSERT_TRUE(run_on_stack(64 * 1024, [] { results = all_results(); }));
  EXPECT_TRUE(results == all_results());
}

// MATRIX_CALLS asks for more calls than the few of every run.
TEST(Robustness, ManyMixedCallsKeepMemoryFlat) {
  CallCorpus corpus;
  const std::vector<Call> calls = corpus.calls();
  const std::size_t mark = corpus.host.live_values();
  std::vector<Anyval*> roots;
  for (const Call& call : calls)
    roots.insert(roots.end(), call.arguments.begin(), call.arguments.end());
  const auto round = [&] {
    for (const Call& call : calls) call.run();
    corpus.host.store().collect(roots, mark);
  };
  for (int k = 0; k < trials(30); ++k) round();  // The heap settles.
  const long blocks = live_blocks();
  const long long resident = resident_bytes();
  const char* wanted = std::getenv("MATRIX_CALLS");
  const std::size_t most =
      static_cast<std::size_t>(wanted == nullptr ? trials(10'000) : std::stol(wanted));
  std::size_t made = 0;
  for (; made < most; made += calls.size()) round();
  EXPECT_EQ(live_blocks(), blocks);
  EXPECT_EQ(corpus.host.live_values(), mark);
  // A sanitizer keeps what is freed for a while.
  if (!kSanitized) {
    EXPECT_LT(resident_bytes() - resident, 1 << 20);
  }
  RecordProperty("calls", std::to_string(made));
}

}  // namespace
