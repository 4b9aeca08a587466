// The pack's handlers on the corpus that fuzzing found, and on random changes of it.
#include <gtest/gtest.h>

#include "tests/fuzz/drive.hpp"
#include "tests/fuzz/targets.hpp"

namespace {

TEST(Fuzz, HandlersOnTheCorpus) {
  fuzz::replay("handlers", fuzz::check_handlers);
}

TEST(Fuzz, HandlersOnRandomInputs) {
  fuzz::try_random_inputs("handlers", fuzz::check_handlers, 5000);
}

}  // namespace
