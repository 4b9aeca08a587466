// Worksheets and data files of the corpora that fuzzing found, and random changes of them.
#include <gtest/gtest.h>

#include "tests/fuzz/drive.hpp"
#include "tests/fuzz/targets.hpp"

namespace {

struct Case {
  const char* name;
  fuzz::Target check;
  int random_inputs;
};

std::ostream& operator<<(std::ostream& out, const Case& c) {
  return out << c.name;
}

class HostFuzz : public ::testing::TestWithParam<Case> {};

TEST_P(HostFuzz, TheCorpusAndRandomInputs) {
  const auto& [name, check, random_inputs] = GetParam();
  fuzz::replay(name, check);
  fuzz::try_random_inputs(name, check, random_inputs);
}

INSTANTIATE_TEST_SUITE_P(, HostFuzz,
                         ::testing::Values(Case{"worksheet", fuzz::check_worksheet, 1000},
                                           Case{"table", fuzz::check_table, 5000},
                                           Case{"matrix_market", fuzz::check_matrix_market, 5000}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
