// The examples: every one runs, and its results are those of an independent calculation.
#include <algorithm>
#include <cmath>
#include <complex>
#include <map>
#include <nlohmann/json.hpp>
#include <numbers>

#include "tests/host/sheet.hpp"

using namespace test;

namespace {

using Complex = std::complex<double>;

// The values of a worksheet's names.
std::map<std::string, Json> values_of(const std::string& example) {
  const ProgramRun run =
      run_program({"--json", std::string(MATRIX_SOURCE_DIR "/examples/") + example});
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  std::map<std::string, Json> values;
  for (const Json& line : run.json())
    values[line.contains("name") ? line["name"].dump() : line["source"].dump()] = line["value"];
  return values;
}

Json named(const std::map<std::string, Json>& values, const std::string& name) {
  const auto found = values.find(Json(name).dump());
  if (found != values.end()) return found->second;
  ADD_FAILURE() << "no value of " << name;
  return nullptr;
}

double number(const std::map<std::string, Json>& values, const std::string& name) {
  return named(values, name)["re"].get<double>();
}

std::vector<double> sorted(const Json& column) {
  std::vector<double> x = column["re"];
  std::sort(x.begin(), x.end());
  return x;
}

Complex element(const Json& matrix, std::size_t k) {
  return {matrix["re"][k], matrix["im"].is_null() ? 0.0 : matrix["im"][k].get<double>()};
}

TEST(Examples, AllRunWithoutAnError) {
  int worksheets = 0;
  for (const auto& entry : std::filesystem::directory_iterator(MATRIX_SOURCE_DIR "/examples")) {
    if (entry.path().extension() != ".ws") continue;
    const ProgramRun run = run_program({entry.path().string()});
    EXPECT_EQ(run.status, 0) << entry.path() << "\n" << run.out;
    EXPECT_EQ(run.err, "");
    ++worksheets;
  }
  EXPECT_GE(worksheets, 3);
}

// The voltages of a ladder fed with 10 V, from its end to its beginning: node k carries what the
// resistor behind it drops, and the currents add up.
std::vector<Complex> ladder(int sections, double resistance, Complex admittance) {
  std::vector<Complex> voltages(static_cast<std::size_t>(sections) + 1);
  Complex voltage = 1.0, current = 0.0;
  for (int k = sections; k >= 0; --k) {
    voltages[static_cast<std::size_t>(k)] = voltage;
    current += voltage * admittance;
    voltage += current * resistance;
  }
  for (std::size_t k = voltages.size(); k-- > 0;) voltages[k] *= 10.0 / voltages[0];
  return voltages;
}

void expect_ladder(const Json& v, Complex admittance) {
  const std::vector<Complex> wanted = ladder(8, 1000.0, admittance);
  ASSERT_EQ(v["unit"], "V");
  ASSERT_EQ(v["re"].size(), 8u);
  for (std::size_t k = 0; k < 8; ++k)
    EXPECT_LT(std::abs(element(v, k) - wanted[k + 1]), 1e-14 * std::abs(wanted[1])) << k;
}

TEST(Examples, TheCircuitAgreesWithALadderWorkedOutFromItsEnd) {
  const auto values = values_of("circuit.ws");
  expect_ladder(named(values, "v"), 1e-3);
  EXPECT_EQ(number(values, "max(abs(v - exact)) < 1e-14{V}"), 1.0);
  EXPECT_LT(std::fabs(number(values, "(delivered - heat) / delivered")), 1e-14);
  // Seen from its end, the ladder is 1 kOhm beside 1 kOhm and the ladder that is one shorter.
  double seen = 0.0;
  for (int k = 0; k < 8; ++k) seen = 1.0 / (1.0 / 1000.0 + 1.0 / (1000.0 + seen));
  EXPECT_NEAR(number(values, "Z[end, end]"), seen, 1e-10);
}

TEST(Examples, TheCircuitAtAFrequencyAgreesWithALadderWorkedOutFromItsEnd) {
  const auto values = values_of("circuit_ac.ws");
  expect_ladder(named(values, "v"), {1e-3, 2 * std::numbers::pi * 250.0 * 100e-9});
  EXPECT_EQ(number(values, "max(abs(v - exact)) < 1e-13{V}"), 1.0);
}

// From statics alone, for the truss is determinate: cuts beside the middle, and a joint above it.
TEST(Examples, TheTrussCarriesWhatItsCutsSay) {
  const auto values = values_of("truss.ws");
  EXPECT_NEAR(number(values, "bottom"), 200.0, 1e-9);
  EXPECT_NEAR(number(values, "top"), -225.0, 1e-9);
  const Json u = named(values, "u");
  // The force in a bar from one joint to the other, which is so far away, for displacements in mm;
  // the data file states the order of the unknowns.
  const auto force = [&](std::size_t from, std::size_t to, double dx, double dy) {
    const auto stretch = [&](std::size_t k) {
      return 1e-3 * (u["re"][to + k].get<double>() - u["re"][from + k].get<double>());
    };
    return 210e9 * 2e-3 * (dx * stretch(0) + dy * stretch(1)) / (dx * dx + dy * dy);
  };
  constexpr std::size_t kB3 = 4, kT2 = 13, kT3 = 15;
  EXPECT_NEAR(force(kT2, kB3, 2, -2), 25e3 * std::sqrt(2.0), 1e-5);
  EXPECT_NEAR(force(kB3, kT3, 0, 2), 0.0, 1e-5);
}

// From the moments of its loads about the nodes at the middle.
TEST(Examples, TheBridgeCarriesItsLoads) {
  const auto values = values_of("bridge.ws");
  EXPECT_EQ(number(values, "m"), 45.0);
  EXPECT_NEAR(number(values, "pull"), 560.0, 1e-9);
  EXPECT_NEAR(number(values, "push"), -576.0, 1e-9);
  EXPECT_EQ(named(values, "push")["unit"], "kN");
  EXPECT_NEAR(number(values, "sum(R[1:2:end]) in {kN}"), 440.0, 1e-9);
}

TEST(Examples, TheBeamBendsAsTheTextbookSays) {
  const auto values = values_of("beam.ws");
  // F L^3 / (3 E I) of 10 kN, 3 m, 210 GPa and 100 x 200 mm; and 6 F L / (b h^2).
  EXPECT_NEAR(number(values, "w"), 45.0 / 7, 1e-12);
  EXPECT_EQ(named(values, "w")["unit"], "mm");
  EXPECT_NEAR(number(values, "slope"), 0.045 / 14, 1e-15);
  EXPECT_FALSE(named(values, "slope").contains("unit"));
  EXPECT_NEAR(number(values, "sigma"), 45.0, 1e-12);
  EXPECT_EQ(named(values, "sigma")["unit"], "MPa");
}

TEST(Examples, TheDifferenceOperatorHasItsKnownSpectrum) {
  const auto values = values_of("difference.ws");
  const std::vector<double> lambda = sorted(named(values, "lambda"));
  ASSERT_EQ(lambda.size(), 12u);
  for (std::size_t k = 0; k < lambda.size(); ++k)
    EXPECT_NEAR(lambda[k], 2 - 2 * std::cos((static_cast<double>(k) + 1) * std::acos(-1.0) / 13),
                1e-14);
  EXPECT_LT(number(values, "norme(T*S - S*diag(exact))"), 1e-13);
}

TEST(Examples, TheCalibrationGivesTheCertifiedLine) {
  const auto values = values_of("calibration.ws");
  const double certified[] = {-0.262323073774029, 1.00211681802045};
  for (const char* name : {"b", "c"}) {
    const Json line = named(values, name);
    for (std::size_t k = 0; k < 2; ++k)
      EXPECT_NEAR(line["re"][k].get<double>(), certified[k], 1e-12) << name;
  }
  EXPECT_NEAR(number(values, "s"), 0.884796396144373, 1e-12);
  const double ratio = named(values, "sigma[0]/sigma[1]")["re"];
  EXPECT_NEAR(number(values, "cond2(A'*A)"), ratio * ratio, 1e-5);
}

TEST(Examples, TheChainVibratesAtItsKnownFrequencies) {
  const auto values = values_of("vibration.ws");
  const std::vector<double> w = sorted(named(values, "w"));
  const Json lambda = named(values, "lambda");
  for (std::size_t mode = 1; mode <= 5; ++mode) {
    // Five masses of 0.1 kg between walls, springs of 4 kN/m.
    const double exact = 2 * std::sqrt(4000 / 0.1) * std::sin(double(mode) * std::numbers::pi / 12);
    EXPECT_NEAR(w[mode - 1], exact, 1e-10);
    const double half = 1e-3 * exact / 2;
    const Complex pole(-half * exact, exact * std::sqrt(1 - half * half));
    double nearest = 1;
    for (std::size_t k = 0; k < 10; ++k)
      nearest = std::min(nearest, std::abs(element(lambda, k) - pole));
    EXPECT_LT(nearest, 1e-9) << mode;
  }
  EXPECT_LT(number(values, "norme(shapes'*shapes - identity(n))"), 1e-13);
}

TEST(Examples, TheControllerIsStableAsItsPolynomialSays) {
  for (const auto& [name, value] : values_of("controller.ws"))
    if (name == "stable" || name.find_first_of("<>") != std::string::npos) {
      EXPECT_EQ(value["re"], 1.0) << name;
    }
}

// Data files of K = (E A / L) tridiag(-1, 2, -1) and M = (rho A L / 6) tridiag(1, 4, 1).
TEST(Examples, TheRodVibratesAtItsKnownFrequencies) {
  constexpr double kElasticity = 210e9, kDensity = 7850, kArea = 1e-4, kElement = 0.1;
  constexpr std::size_t n = 9;
  const auto values = values_of("frequencies.ws");
  const auto expect_tridiagonal = [&](const char* name, double factor, double diagonal,
                                      double off) {
    const Json matrix = named(values, name);
    ASSERT_EQ(matrix["re"].size(), n * n);
    for (std::size_t k = 0; k < n * n; ++k) {
      const auto apart = static_cast<int>(k / n) - static_cast<int>(k % n);
      const double expected = apart == 0 ? diagonal : std::abs(apart) == 1 ? off : 0;
      EXPECT_NEAR(matrix["re"][k].get<double>() / factor, expected, 1e-15) << k;
    }
  };
  expect_tridiagonal("K", kElasticity * kArea / kElement, 2, -1);
  expect_tridiagonal("M", kDensity * kArea * kElement / 6, 4, 1);
  const Json frequencies = named(values, "sorted");
  EXPECT_EQ(frequencies["unit"], "Hz");
  for (std::size_t j = 1; j <= n; ++j) {
    const double t = double(j) * std::numbers::pi / (n + 1);
    const double omega = std::sqrt(6 * kElasticity / kDensity / (kElement * kElement) *
                                   (1 - std::cos(t)) / (2 + std::cos(t)));
    EXPECT_NEAR(frequencies["re"][j - 1].get<double>() * 2 * std::numbers::pi / omega, 1, 2e-14);
  }
  EXPECT_LT(number(values, "largest_deviation"), 2e-14);
  EXPECT_LT(number(values, "largest_coupling"), 2e-14);
}

}  // namespace
