// Every row and every export, on representative arguments, with every allocation failing in turn,
// be it of an array or of one of the host's values: each time a value or a documented message, no
// leak, no argument changed by a bit, the evaluator bracket balanced, the floating-point
// environment as it was, and the next call as if nothing had happened. (Memory comes from nowhere
// else: the pack does not import malloc, see pack_table_test.)
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "tests/support/call_corpus.hpp"
#include "tests/support/fp_environment.hpp"

namespace matrix_pack {
namespace {

using namespace test;

bool is_documented(const Call& call, const Anyval* value) {
  if (value == sError_OutOfMemory) return true;
  if (value == nullptr) return call.function->name == "submatrix";
  if (value->kind != kErrorKind) return false;
  const char* text = static_cast<const aError*>(value)->message->text;
  // The last is what a function of the worksheet's says, which `matrix` passes on.
  for (const char* message :
       {"out of memory", "Unknown error", "Null matrix or vector pointer.", "memory exhausted"})
    if (std::strcmp(text, message) == 0) return true;
  return false;
}

TEST(Sweep, EveryAllocationOfEveryFunctionMayFail) {
  CallCorpus corpus;
  TestHost& host = corpus.host;
  const auto bits = [&](const Anyval* value) { return calls::bits_of(host.store(), value); };
  for (const Call& call : corpus.calls()) {
    SCOPED_TRACE(call.name);
    std::vector<std::uint64_t> before;
    for (Anyval* a : call.arguments) before.push_back(bits(a));
    // Twice: the first call of all may set up what stays (an exception's storage, a table).
    call.run();
    const std::size_t mark = host.live_values();
    const AllocationFaults counted;
    const auto usual = bits(call.run());
    host.store().collect(call.arguments, mark);
    if (counted.count() > 500) continue;  // `matrix` asks for each of very many elements.

    const auto environment = fp_environment();
    for (const Failing failing : {Failing::once, Failing::from_then_on}) {
      for (int nth = 1;; ++nth) {
        const long blocks = live_blocks();
        Anyval* value;
        bool happened;
        {
          AllocationFaults faults(nth, failing);
          value = call.run();
          happened = faults.happened();
        }
        ASSERT_EQ(fp_environment(), environment) << nth;
        ASSERT_EQ(host.evaluator().depth(), 0u) << nth;
        if (!is_documented(call, value)) {
          ASSERT_EQ(bits(value), usual) << nth << ": " << describe(value);
        }
        host.store().collect(call.arguments, mark);
        ASSERT_EQ(live_blocks(), blocks) << nth << ": blocks left behind";
        if (!happened) break;
        ASSERT_EQ(bits(call.run()), usual) << "after " << nth;
        host.store().collect(call.arguments, mark);
        ASSERT_LT(nth, 10000);
      }
    }
    for (std::size_t k = 0; k < before.size(); ++k)
      EXPECT_EQ(bits(call.arguments[k]), before[k]) << "argument " << k + 1;
  }
}

}  // namespace
}  // namespace matrix_pack
