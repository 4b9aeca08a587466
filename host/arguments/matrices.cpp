#include "host/arguments/matrices.hpp"

#include <algorithm>
#include <bit>
#include <complex>
#include <cstdint>
#include <limits>
#include <vector>

namespace arguments {

namespace {

using Limits = std::numeric_limits<double>;
using Complex = std::complex<double>;

double power_of_two(int exponent) {
  return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

double mixed_number(Random& random) {
  const double sign = random.one_in(2) ? -1.0 : 1.0;
  switch (random.below(14)) {
    case 0:
      return sign * Limits::infinity();
    case 1:
      return Limits::quiet_NaN();
    case 2:
      return sign * 0.0;
    case 3:
      return sign * Limits::denorm_min() * random.below(100);
    case 4:
      return sign * Limits::max();
    case 5:
      return sign * Limits::min();
    case 6:
      return random.unit() * power_of_two(random.small(1000));
    case 7:
      return sign;
    default:
      return random.unit();
  }
}

// The magnitude at which a test changes its answer, or one to either side of it.
double edge_number(Random& random, double edge) {
  const double sign = random.one_in(2) ? -1.0 : 1.0;
  return sign * edge * (1.0 + random.small(1) * 0x1p-50);
}

// The leading 3 x 3 block has the eigenvalues 3, 1 and 1 and is positive definite, so that a pack's
// functions of one matrix, and of a matrix and one of its eigenvalues, have something to work on.
double plain_element(int i, int j) {
  constexpr double kBlock[3][3] = {{2, 1, 0}, {1, 2, 0}, {0, 0, 1}};
  if (i < 3 && j < 3) return kBlock[i][j];
  return i == j ? 3.0 : i == j + 1 || j == i + 1 ? 0.5 : 0.0;
}

// Matrices in which nothing is random; of other kinds a random element.
double known_element(Draft& d, Structure structure, bool imaginary, int i, int j) {
  switch (structure) {
    case Structure::identity:
      return i == j ? 1.0 : 0.0;
    case Structure::jordan:
      if (i != j) return j == i + 1 && !imaginary ? 1.0 : 0.0;
      return d.im == nullptr ? 1.0 + i / 4 : imaginary ? 2.0 : 0.0;
    case Structure::cyclic:
      return j == i + 1 ? 1.0 : i == d.rows - 1 && j == 0 ? 0x1p-30 : 0.0;
    case Structure::clustered:
      return i == j ? 2.0 : 1.0;
    case Structure::permutation:
      return (3 * i + 1) % d.rows == j ? 1.0 : 0.0;
    case Structure::circulant:
      return 1.0 / (1 + (j - i + d.rows) % d.rows);
    case Structure::hilbert:
      return 1.0 / (i + j + 1);
    case Structure::clement:
      return j == i + 1 ? i + 1.0 : i == j + 1 ? d.rows - i : 0.0;
    case Structure::frank:
      return i > j + 1 ? 0.0 : d.rows - std::max(i, j);
    case Structure::grcar:
      return i == j + 1 ? -1.0 : i <= j && j <= i + 3 ? 1.0 : 0.0;
    case Structure::rotations:
      return i / 2 != j / 2 ? 0.0 : i == j ? 0.6 : i < j ? -0.8 : 0.8;
    default:
      return d.next();
  }
}

double element(Draft& d, Structure structure, bool imaginary, int i, int j) {
  const auto where = [&](bool here) { return here ? d.next() : 0.0; };
  switch (structure) {
    case Structure::plain:
      return plain_element(i, j) * (imaginary ? 0.25 : 1.0);
    case Structure::zero_imaginary:
      return where(!imaginary);
    case Structure::triangular:
      return i == j ? i + 1.0 : where(i < j);
    case Structure::hidden_triangular:
      i = (5 * i + 2) % d.rows, j = (5 * j + 2) % d.cols;
      return i == j ? i + 1.0 : where(i < j);
    case Structure::block_triangular:
      return where(i <= j || (j >= d.rows / 4 && i < d.rows - d.rows / 4));
    case Structure::lower:
      return where(i >= j);
    case Structure::bidiagonal:
      return where(i == j || j == i + 1);
    case Structure::bidiagonal_gaps:
      return where((i == j && i % 4 != 2) || j == i + 1);
    case Structure::blocks:
      return where(i / 3 == j / 3);
    case Structure::badly_scaled:
      return d.next() * power_of_two(40 * (j - i) / std::max(d.rows, d.cols));
    case Structure::tridiagonal:
      return where(i <= j + 1 && j <= i + 1);
    case Structure::companion:
      return i == j + 1 ? 1.0 : where(i == 0);
    case Structure::graded:
      return d.next() * power_of_two(-(i + j));
    case Structure::steep:
      return d.next() * power_of_two(200 - 7 * (i + j) % 400);
    case Structure::zero_row:
      return where(i != d.rows / 2);
    case Structure::zero_column:
      return where(j != d.cols / 2);
    default:
      return known_element(d, structure, imaginary, i, j);
  }
}

// The lower triangle becomes the mirror image of the upper one, times `sign`; the diagonal of a
// part that changes its sign is 0.
void mirror(const Draft& d, double* part, double sign) {
  const auto at = [&](int i, int j) -> double& { return part[std::ptrdiff_t{j} * d.rows + i]; };
  for (int j = 0; j < std::min(d.rows, d.cols); ++j) {
    if (sign < 0) at(j, j) = 0.0;
    for (int i = 0; i < j; ++i) at(j, i) = sign * at(i, j);
  }
}

void fill_part(Draft& d, Structure structure, double* part, bool imaginary) {
  for (std::ptrdiff_t j = 0; j < d.cols; ++j)
    for (int i = 0; i < d.rows; ++i)
      part[j * d.rows + i] = element(d, structure, imaginary, i, static_cast<int>(j));
  if (structure == Structure::symmetric || structure == Structure::dominant)
    mirror(d, part, imaginary ? -1.0 : 1.0);
  if (structure == Structure::skew) mirror(d, part, imaginary ? 1.0 : -1.0);
  if (structure != Structure::dominant || imaginary) return;
  for (std::ptrdiff_t j = 0; j < std::min(d.rows, d.cols); ++j)
    part[j * d.rows + j] += 20.0 * d.rows;
}

// Integers from -3 to 3, first all real parts, then the imaginary ones.
std::vector<Complex> integers(std::size_t count, bool complex, Random random) {
  std::vector<Complex> all(count);
  for (Complex& z : all) z.real(random.small(3));
  for (Complex& z : all) z.imag(complex ? random.small(3) : 0);
  return all;
}

// With `own`, the second factor is the conjugate transpose of the first, as far as that goes. All
// sums are exact.
void fill_product(Draft& d, bool own) {
  const int rank = own ? d.rows : (std::min(d.rows, d.cols) + 1) / 2;
  const auto size = [](int m, int n) { return static_cast<std::size_t>(m) * std::size_t(n); };
  const auto at = [](int m, int i, int j) {
    return static_cast<std::size_t>(j) * std::size_t(m) + std::size_t(i);
  };
  const bool complex = d.im != nullptr;
  const auto left = integers(size(d.rows, rank), complex, {d.random.next()});
  const auto right = integers(size(rank, d.cols), complex, {d.random.next()});
  for (int j = 0; j < d.cols; ++j)
    for (int i = 0; i < d.rows; ++i) {
      Complex sum = 0.0;
      for (int k = 0; k < rank; ++k)
        sum += left[at(d.rows, i, k)] *
               (own && j < d.rows ? std::conj(left[at(d.rows, j, k)]) : right[at(rank, k, j)]);
      if (d.re != nullptr) d.re[at(d.rows, i, j)] = sum.real();
      if (complex) d.im[at(d.rows, i, j)] = sum.imag();
    }
}

}  // namespace

double Draft::next() {
  if (given != nullptr) return (*given)();
  switch (source) {
    case Source::integers:
      return random.small(4);
    case Source::zeros:
      return 0.0;
    case Source::negative_zeros:
      return -0.0;
    case Source::repeated:
      return 2.5;
    case Source::huge:
      return random.unit() * 0x1p1022;
    case Source::large:
      return random.unit() * 0x1p700;
    case Source::big:
      return random.unit() * 0x1p233;
    case Source::small:
      return random.unit() * 0x1p-233;
    case Source::tiny:
      return random.unit() * 0x1p-1000;
    case Source::denormal:
      return random.unit() * 0x1p-1000 * 0x1p-60;
    case Source::edge104:
      return edge_number(random, 1e104);
    case Source::edge307:
      return edge_number(random, 1e307);
    case Source::nans:
      return Limits::quiet_NaN();
    case Source::infinities:
      return random.one_in(2) ? -Limits::infinity() : Limits::infinity();
    case Source::mixed:
      return mixed_number(random);
    default:
      return random.unit();
  }
}

const char* name_of(Source source) {
  constexpr const char* kNames[kSources] = {
      "random",       "integers", "zeros",        "-0.0", "all equal", "huge",
      "large",        "big",      "small",        "tiny", "denormal",  "around 1e104",
      "around 1e307", "all NaN",  "all infinite", "mixed"};
  return kNames[static_cast<int>(source)];
}

const char* name_of(Structure structure) {
  constexpr const char* kNames[kStructures] = {"",
                                               "plain",
                                               "no imaginary part",
                                               "symmetric",
                                               "skew",
                                               "dominant",
                                               "definite",
                                               "deficient",
                                               "triangular",
                                               "hidden triangular",
                                               "block triangular",
                                               "lower triangular",
                                               "tridiagonal",
                                               "bidiagonal",
                                               "bidiagonal with gaps",
                                               "blocks",
                                               "companion",
                                               "graded",
                                               "steep",
                                               "badly scaled",
                                               "with a zero row",
                                               "with a zero column",
                                               "identity",
                                               "Jordan",
                                               "cyclic",
                                               "clustered",
                                               "permutation",
                                               "circulant",
                                               "Hilbert",
                                               "Clement",
                                               "Frank",
                                               "Grcar",
                                               "rotations"};
  return kNames[static_cast<int>(structure)];
}

void fill(Draft& draft, Structure structure) {
  if (structure == Structure::definite || structure == Structure::deficient)
    return fill_product(draft, structure == Structure::definite);
  if (draft.re != nullptr) fill_part(draft, structure, draft.re, false);
  if (draft.im != nullptr) fill_part(draft, structure, draft.im, true);
}

}  // namespace arguments
