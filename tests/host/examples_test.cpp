// The examples: every one runs, and its results are those of an independent calculation.
#include <algorithm>
#include <cmath>
#include <complex>
#include <map>
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
  EXPECT_LT(named(values, "max(abs(v - matrix(n, 1, exact) * V)) in {V}")["re"], 1e-14);
  EXPECT_LT(std::fabs(named(values, "(delivered - heat) / delivered")["re"].get<double>()), 1e-14);
  // Seen from its end, the ladder is 1 kOhm beside 1 kOhm and the ladder that is one shorter.
  double seen = 0.0;
  for (int k = 0; k < 8; ++k) seen = 1.0 / (1.0 / 1000.0 + 1.0 / (1000.0 + seen));
  EXPECT_NEAR(named(values, "Z[n - 1, n - 1]")["re"].get<double>(), seen, 1e-10);
}

TEST(Examples, TheCircuitAtAFrequencyAgreesWithALadderWorkedOutFromItsEnd) {
  const auto values = values_of("circuit_ac.ws");
  expect_ladder(named(values, "v"), {1e-3, 2 * std::numbers::pi * 250.0 * 100e-9});
  EXPECT_LT(named(values, "max(abs(v - matrix(n, 1, exact) * V)) in {V}")["re"], 1e-13);
}

// --- The truss ---

struct Joint {
  double x, y;
  int unknown_x, unknown_y;  // -1: held.
};

// B0 to B6, then T1 to T5, with their unknowns in the order that the data file states.
std::vector<Joint> truss_joints() {
  std::vector<Joint> joints = {{0, 0, -1, -1}};
  int unknown = 0;
  for (int k = 1; k <= 5; ++k, unknown += 2) joints.push_back({2.0 * k, 0, unknown, unknown + 1});
  joints.push_back({12, 0, unknown++, -1});
  for (int k = 1; k <= 5; ++k, unknown += 2) joints.push_back({2.0 * k, 2, unknown, unknown + 1});
  return joints;
}

std::vector<std::pair<std::size_t, std::size_t>> truss_bars() {
  auto top = [](std::size_t k) { return k + 6; };
  std::vector<std::pair<std::size_t, std::size_t>> bars = {{0, top(1)}, {6, top(5)}, {top(1), 2},
                                                           {top(2), 3}, {top(4), 3}, {top(5), 4}};
  for (std::size_t k = 0; k < 6; ++k) bars.emplace_back(k, k + 1);
  for (std::size_t k = 1; k < 5; ++k) bars.emplace_back(top(k), top(k + 1));
  for (std::size_t k = 1; k <= 5; ++k) bars.emplace_back(k, top(k));
  return bars;
}

constexpr double kStiffness = 210e9 * 2e-3;
constexpr std::size_t kUnknowns = 21;

// The force in a bar for displacements in metres: what it is stretched by, times E A / length.
double bar_force(const Joint& a, const Joint& b, const std::vector<double>& u) {
  auto at = [&](int unknown) { return unknown < 0 ? 0.0 : u[static_cast<std::size_t>(unknown)]; };
  const double dx = b.x - a.x, dy = b.y - a.y, length = std::hypot(dx, dy);
  const double stretch =
      (dx * (at(b.unknown_x) - at(a.unknown_x)) + dy * (at(b.unknown_y) - at(a.unknown_y))) /
      length;
  return kStiffness / length * stretch;
}

// Adds the pull of every bar on its joints, for given displacements.
std::vector<double> joint_forces(const std::vector<double>& u) {
  const std::vector<Joint> joints = truss_joints();
  std::vector<double> forces(kUnknowns);
  for (const auto& [i, j] : truss_bars()) {
    const Joint &a = joints[i], &b = joints[j];
    const double force = bar_force(a, b, u), length = std::hypot(b.x - a.x, b.y - a.y);
    auto add = [&](int unknown, double x) {
      if (unknown >= 0) forces[static_cast<std::size_t>(unknown)] += x;
    };
    add(a.unknown_x, -force * (b.x - a.x) / length);
    add(a.unknown_y, -force * (b.y - a.y) / length);
    add(b.unknown_x, force * (b.x - a.x) / length);
    add(b.unknown_y, force * (b.y - a.y) / length);
  }
  return forces;
}

TEST(Examples, TheTrussIsTheOneThatItsDataFileStates) {
  const Json k = named(values_of("truss.ws"), "K");
  ASSERT_EQ(k["re"].size(), kUnknowns * kUnknowns);
  for (std::size_t j = 0; j < kUnknowns; ++j) {
    std::vector<double> unit(kUnknowns);
    unit[j] = 1.0;
    const std::vector<double> column = joint_forces(unit);
    for (std::size_t i = 0; i < kUnknowns; ++i)
      EXPECT_NEAR(k["re"][j * kUnknowns + i].get<double>(), column[i], 1e-6) << i << " " << j;
  }
}

TEST(Examples, TheTrussIsInEquilibrium) {
  const auto values = values_of("truss.ws");
  const Json displacements = named(values, "u");
  std::vector<double> u;
  for (const Json& mm : displacements["re"]) u.push_back(mm.get<double>() * 1e-3);
  const std::vector<double> forces = joint_forces(u);
  for (std::size_t k = 0; k < kUnknowns; ++k) {
    const double load = k < 10 && k % 2 == 1 ? -50e3 : 0.0;
    EXPECT_NEAR(forces[k], load, 1e-5) << k;
  }
  // Known from cuts: both chords beside the middle, a diagonal, and a vertical without force.
  const std::vector<Joint> joints = truss_joints();
  EXPECT_NEAR(named(values, "bottom")["re"].get<double>(), 200.0, 1e-9);
  EXPECT_NEAR(named(values, "top")["re"].get<double>(), -225.0, 1e-9);
  EXPECT_NEAR(bar_force(joints[8], joints[3], u), 25e3 * std::sqrt(2.0), 1e-5);
  EXPECT_NEAR(bar_force(joints[3], joints[9], u), 0.0, 1e-5);
}

TEST(Examples, TheBeamBendsAsTheTextbookSays) {
  const auto values = values_of("beam.ws");
  // F L^3 / (3 E I) of 10 kN, 3 m, 210 GPa and 100 x 200 mm; and 6 F L / (b h^2).
  EXPECT_NEAR(named(values, "w")["re"].get<double>(), 45.0 / 7, 1e-12);
  EXPECT_EQ(named(values, "w")["unit"], "mm");
  EXPECT_NEAR(named(values, "slope")["re"].get<double>(), 0.045 / 14, 1e-15);
  EXPECT_FALSE(named(values, "slope").contains("unit"));
  EXPECT_NEAR(named(values, "sigma")["re"].get<double>(), 45.0, 1e-12);
  EXPECT_EQ(named(values, "sigma")["unit"], "MPa");
}

TEST(Examples, TheDifferenceOperatorHasItsKnownSpectrum) {
  const auto values = values_of("difference.ws");
  std::vector<double> lambda = named(values, "lambda")["re"];
  std::sort(lambda.begin(), lambda.end());
  ASSERT_EQ(lambda.size(), 12u);
  for (std::size_t k = 0; k < lambda.size(); ++k)
    EXPECT_NEAR(lambda[k], 2 - 2 * std::cos((static_cast<double>(k) + 1) * std::acos(-1.0) / 13),
                1e-14);
  EXPECT_LT(named(values, "norme(T*S - S*diag(matrix(n, 1, exact)))")["re"], 1e-13);
}

TEST(Examples, TheCalibrationGivesTheCertifiedLine) {
  const auto values = values_of("calibration.ws");
  const double certified[] = {-0.262323073774029, 1.00211681802045};
  for (const char* name : {"b", "c"}) {
    const Json line = named(values, name);
    for (std::size_t k = 0; k < 2; ++k)
      EXPECT_NEAR(line["re"][k].get<double>(), certified[k], 1e-12) << name;
  }
  EXPECT_NEAR(named(values, "s")["re"].get<double>(), 0.884796396144373, 1e-12);
  const double ratio = named(values, "sigma[0]/sigma[1]")["re"];
  EXPECT_NEAR(named(values, "cond2(A'*A)")["re"].get<double>(), ratio * ratio, 1e-5);
}

// The frequencies of a chain of n masses m between walls, springs k.
double chain_frequency(int n, int mode, double k, double m) {
  return 2 * std::sqrt(k / m) * std::sin(mode * std::acos(-1.0) / (2 * (n + 1)));
}

TEST(Examples, TheChainVibratesAtItsKnownFrequencies) {
  const auto values = values_of("vibration.ws");
  std::vector<double> w = named(values, "w")["re"];
  std::sort(w.begin(), w.end());
  const Json lambda = named(values, "lambda");
  std::vector<std::complex<double>> damped;
  for (std::size_t k = 0; k < 10; ++k)
    damped.emplace_back(lambda["re"][k].get<double>(), lambda["im"][k].get<double>());
  for (int mode = 1; mode <= 5; ++mode) {
    const double exact = chain_frequency(5, mode, 4000, 0.1);
    EXPECT_NEAR(w[static_cast<std::size_t>(mode - 1)], exact, 1e-10);
    const double half = 1e-3 * exact / 2;
    const std::complex<double> pole(-half * exact, exact * std::sqrt(1 - half * half));
    double nearest = 1;
    for (const auto z : damped) nearest = std::min(nearest, std::abs(z - pole));
    EXPECT_LT(nearest, 1e-9) << mode;
  }
  EXPECT_LT(named(values, "norme(shapes'*shapes - identity(n))")["re"], 1e-13);
}

TEST(Examples, TheControllerIsStableAsItsPolynomialSays) {
  for (const auto& [name, value] : values_of("controller.ws"))
    if (name == "stable" || name.find('<') != std::string::npos ||
        name.find('>') != std::string::npos) {
      EXPECT_EQ(value["re"], 1.0) << name;
    }
}

}  // namespace
