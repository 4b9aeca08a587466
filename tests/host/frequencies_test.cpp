// The example of natural frequencies: its data files are those of the model that it states, and its
// results those of the closed form.
#include <cmath>
#include <numbers>

#include "tests/host/sheet.hpp"

using namespace test;

namespace {

constexpr double kElasticity = 210e9;
constexpr double kDensity = 7850;
constexpr double kArea = 1e-4;
constexpr double kElement = 0.1;
constexpr int kOrder = 9;

// Expects factor * tridiag(off, diagonal, off), to rounding.
void expect_tridiagonal(const Json& matrix, double factor, double diagonal, double off) {
  ASSERT_EQ(matrix["re"].size(), static_cast<std::size_t>(kOrder * kOrder));
  for (int j = 0; j < kOrder; ++j)
    for (int i = 0; i < kOrder; ++i) {
      const double expected = i == j ? diagonal : std::abs(i - j) == 1 ? off : 0;
      const double element = matrix["re"][static_cast<std::size_t>(j * kOrder + i)];
      EXPECT_NEAR(element / factor, expected, 1e-15) << i << " " << j;
    }
}

TEST(Frequencies, AgreeWithTheClosedForm) {
  const ProgramRun run = run_program({"--json", MATRIX_SOURCE_DIR "/examples/frequencies.ws"});
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  Json values;
  for (const Json& line : run.json()) values[line["name"].get<std::string>()] = line["value"];
  expect_tridiagonal(values["K"], kElasticity * kArea / kElement, 2, -1);
  expect_tridiagonal(values["M"], kDensity * kArea * kElement / 6, 4, 1);

  const Json& sorted = values["sorted"]["re"];
  ASSERT_EQ(sorted.size(), static_cast<std::size_t>(kOrder));
  for (int j = 1; j <= kOrder; ++j) {
    const double t = j * std::numbers::pi / (kOrder + 1);
    const double omega = std::sqrt(6 * kElasticity / kDensity / (kElement * kElement) *
                                   (1 - std::cos(t)) / (2 + std::cos(t)));
    const double frequency = sorted[static_cast<std::size_t>(j - 1)];
    EXPECT_NEAR(frequency * 2 * std::numbers::pi / omega, 1, 2e-14) << j;
  }
  EXPECT_LT(values["largest_deviation"]["re"].get<double>(), 2e-14);
  EXPECT_LT(values["largest_coupling"]["re"].get<double>(), 2e-14);
  EXPECT_EQ(values["sorted"]["unit"], "1/s");
}

}  // namespace
