#include "host/packcheck/arguments/elements.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "host/packcheck/arguments/random.hpp"

namespace packcheck {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallestNormal = std::numeric_limits<double>::min();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();

// The leading 3 x 3 block has the eigenvalues 3, 1 and 1 and is positive definite, so that a pack's
// functions of one matrix, and of a matrix and one of its eigenvalues, have something to work on.
double plain_element(int i, int j) {
  constexpr double kBlock[3][3] = {{2, 1, 0}, {1, 2, 0}, {0, 0, 1}};
  if (i < 3 && j < 3) return kBlock[i][j];
  return i == j ? 3.0 : i == j + 1 || j == i + 1 ? 0.5 : 0.0;
}

double random_sign(Random& random) {
  return random.one_in(2) ? -1.0 : 1.0;
}

double mixed_element(Random& random) {
  const double sign = random_sign(random);
  switch (random.below(14)) {
    case 0:
      return sign * kInfinity;
    case 1:
      return kNan;
    case 2:
      return sign * 0.0;
    case 3:
      return sign * kSmallest * random.below(100);
    case 4:
      return sign * kLargest;
    case 5:
      return sign * kSmallestNormal;
    case 6:
      return sign * std::ldexp(random.unit(), random.below(2000) - 1000);
    case 7:
      return sign * 1.0;
    default:
      return sign * random.unit();
  }
}

// The symmetric fills take the element above the diagonal for the one below it.
std::uint64_t element_seed(const Recipe& recipe, int i, int j) {
  if (recipe.fill == Fill::symmetric || recipe.fill == Fill::definite)
    std::tie(i, j) = std::minmax({i, j});
  return recipe.seed * 0x9E3779B97F4A7C15u + static_cast<std::uint64_t>(i) * 0xD1B54A32D192ED03u +
         static_cast<std::uint64_t>(j) * 0x8CB92BA72F3D8DD7u + 1;
}

}  // namespace

double element(const Recipe& recipe, int i, int j) {
  Random random{element_seed(recipe, i, j)};
  random.next();
  const double ordinary = 2.0 * random.unit() - 1.0;
  const double sign = random_sign(random);
  switch (recipe.fill) {
    case Fill::plain:
      return plain_element(i, j);
    case Fill::integers:
      return random.below(9) - 4;
    case Fill::definite:
      return i == j ? recipe.rows + 1.0 : ordinary;
    case Fill::triangular:
      return i > j ? 0.0 : ordinary;
    case Fill::identity:
      return i == j ? 1.0 : 0.0;
    case Fill::zeros:
      return 0.0;
    case Fill::negative_zeros:
      return -0.0;
    case Fill::repeated:
      return 2.5;
    case Fill::zero_row:
      return i == recipe.rows / 2 ? 0.0 : ordinary;
    case Fill::zero_column:
      return j == recipe.cols / 2 ? 0.0 : ordinary;
    case Fill::graded:
      return ordinary * std::pow(10.0, 40 * ((i + 2 * j) % 11 - 5));
    case Fill::tiny:
      return ordinary * 4.0 * kSmallestNormal;
    case Fill::denormal:
      return sign * kSmallest * (1 + random.below(1000));
    case Fill::huge:
      return ordinary * kLargest;
    case Fill::edge104:
      return sign * 1e104 * (1.0 + (random.below(3) - 1) * 1e-15);
    case Fill::edge307:
      return sign * 1e307 * (1.0 + (random.below(3) - 1) * 1e-15);
    case Fill::all_nan:
      return kNan;
    case Fill::all_infinities:
      return sign * kInfinity;
    case Fill::mixed:
      return mixed_element(random);
    default:
      return ordinary;
  }
}

}  // namespace packcheck
