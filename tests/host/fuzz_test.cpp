// Worksheets and data files of the corpora that fuzzing found, and random changes of them.
#include <gtest/gtest.h>

#include "tests/fuzz/drive.hpp"
#include "tests/fuzz/targets.hpp"

namespace {

void fuzz_target(const char* name, fuzz::Target target, int random_inputs) {
  fuzz::replay(name, target);
  fuzz::try_random_inputs(name, target, random_inputs);
}

TEST(HostFuzz, Worksheets) {
  fuzz::replay("worksheet", fuzz::check_worksheet);
  fuzz::try_random_inputs("worksheet", fuzz::check_worksheet, 1000, fuzz::read_worksheets());
}

TEST(HostFuzz, DataFiles) {
  fuzz_target("table", fuzz::check_table, 5000);
  fuzz_target("matrix_market", fuzz::check_matrix_market, 5000);
}

}  // namespace
