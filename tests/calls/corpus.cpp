#include "tests/calls/corpus.hpp"

#include <limits>
#include <optional>

namespace calls {

namespace {

using arguments::Fill;
using arguments::Form;
using arguments::Source;
using arguments::Structure;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Kind {
  const char* name;
  Form form;
  Fill fill;
  bool square = false;  // Only made square.
  bool large = false;   // Also made with 64 and 100 rows.
  // Stands that part of the array down, in the imaginary one of a complex matrix.
  std::optional<double> special = {};
  std::size_t part = 1;
};

constexpr Fill kUnits = {Source::units, Structure::general};

const Kind kKinds[] = {
    {"real", Form::real, kUnits, false, true},
    {"complex", Form::complex, kUnits, false, true},
    {"integer", Form::real, {Source::integers, Structure::general}},
    {"imaginary", Form::imaginary, kUnits},
    {"lean", Form::lean, kUnits},
    {"zero_imag", Form::complex, {Source::units, Structure::zero_imaginary}},
    {"negative_zero", Form::real, {Source::negative_zeros, Structure::general}},
    {"deficient", Form::real, {Source::units, Structure::deficient}},
    {"complex_deficient", Form::complex, {Source::units, Structure::deficient}},
    {"graded", Form::real, {Source::units, Structure::graded}, false, true},
    {"steep", Form::real, {Source::units, Structure::steep}},
    {"huge", Form::real, {Source::huge, Structure::general}},
    {"complex_huge", Form::complex, {Source::large, Structure::general}},
    {"tiny", Form::real, {Source::tiny, Structure::general}},
    {"denormal", Form::real, {Source::denormal, Structure::general}},
    {"with_nan", Form::real, kUnits, false, false, kNan, 2},
    {"with_infinity", Form::real, kUnits, false, false, kInfinity, 3},
    {"complex_infinity", Form::complex, kUnits, false, false, -kInfinity, 3},
    {"zero_column", Form::real, {Source::units, Structure::zero_column}},
    {"symmetric", Form::real, {Source::units, Structure::symmetric}, true, true},
    {"skew", Form::real, {Source::units, Structure::skew}, true},
    {"hermitian", Form::complex, {Source::units, Structure::symmetric}, true, true},
    {"definite", Form::real, {Source::units, Structure::definite}, true, true},
    {"hermitian_definite", Form::complex, {Source::units, Structure::definite}, true},
    {"triangular", Form::real, {Source::units, Structure::triangular}, true},
    {"jordan", Form::real, {Source::units, Structure::jordan}, true, true},
    {"complex_jordan", Form::complex, {Source::units, Structure::jordan}, true},
    {"cyclic", Form::real, {Source::units, Structure::cyclic}, true},
    {"clustered", Form::real, {Source::units, Structure::clustered}, true},
    {"permutation", Form::real, {Source::units, Structure::permutation}, true},
};

const int kSizes[] = {1, 2, 3, 5, 8, 9, 17, 33};
const int kLargeSizes[] = {64, 100};
const struct {
  int rows, cols;
} kRectangles[] = {{5, 1}, {1, 5}, {3, 2}, {2, 3}, {9, 5}, {8, 17}, {33, 17}, {100, 9}};

aMatrix* make(efi::Store& store, const Kind& kind, int rows, int cols) {
  std::uint64_t seed = 0;
  for (const char* c = kind.name; *c != '\0'; ++c)
    seed = seed * 31 + static_cast<unsigned char>(*c);
  seed = (seed << 16) + static_cast<std::uint64_t>(rows * 256 + cols);
  arguments::Recipe recipe = arguments::array(kind.form, rows, cols, kind.fill, seed);
  const auto count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
  recipe.special = kind.special;
  recipe.place = count / kind.part + (kind.form == Form::complex ? count : 0);
  return static_cast<aMatrix*>(arguments::make(store, recipe));
}

}  // namespace

aMatrix* make_matrix(efi::Store& store, const std::string& name, int rows, int cols) {
  for (const Kind& kind : kKinds)
    if (name == kind.name) return make(store, kind, rows, cols);
  return nullptr;
}

std::vector<Sample> make_samples(efi::Store& store) {
  std::vector<Sample> samples;
  const auto add = [&](const Kind& kind, int rows, int cols) {
    const std::string size = std::to_string(rows) + "x" + std::to_string(cols);
    samples.push_back({std::string(kind.name) + " " + size, make(store, kind, rows, cols)});
  };
  for (const Kind& kind : kKinds) {
    for (const int n : kSizes) add(kind, n, n);
    if (kind.large)
      for (const int n : kLargeSizes) add(kind, n, n);
    if (!kind.square)
      for (const auto& [rows, cols] : kRectangles) add(kind, rows, cols);
  }
  return samples;
}

}  // namespace calls
