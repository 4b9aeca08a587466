// Every row and every export, on representative arguments, with every allocation failing in turn,
// be it of an array or of one of the host's values: each time a value or a documented message, no
// leak, no argument changed by a bit, the evaluator bracket balanced, the floating-point
// environment as it was, and the next call as if nothing had happened. (Memory comes from nowhere
// else: the pack does not import malloc, see pack_table_test.)
#include "tests/support/checked_call.hpp"

namespace {

using namespace test;

TEST(Sweep, EveryAllocationOfEveryFunctionMayFail) {
  CallCorpus corpus;
  for (const Call& call : corpus.calls()) {
    call.run();  // The first call of all may set up what stays (an exception's storage, a table).
    CheckedCall checked(corpus.host, call);
    const AllocationFaults counted;
    const auto usual = checked.run();
    ASSERT_EQ(checked.complaint, "");
    if (counted.count() > 500) continue;  // `matrix` asks for each of very many elements.
    for (const Failing failing : {Failing::once, Failing::from_then_on})
      for (int nth = 1;; ++nth) {
        SCOPED_TRACE(call.name + ", allocation " + std::to_string(nth));
        const auto outcome = checked.run(nth, failing);
        ASSERT_EQ(checked.complaint, "");
        ASSERT_TRUE(outcome.says_so || outcome.bits == usual.bits) << outcome.words;
        if (!outcome.short_of_memory) break;
        ASSERT_EQ(checked.run().bits, usual.bits);
        ASSERT_LT(nth, 1000);
      }
  }
}

}  // namespace
