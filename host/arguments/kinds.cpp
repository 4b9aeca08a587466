#include "host/arguments/kinds.hpp"

#include <limits>

namespace arguments {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

constexpr Fill kUnits = {Source::units, Structure::general};

}  // namespace

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> kKinds = {
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
      {"real_gaps", Form::real, kUnits, false, false, {}, 1, 2},
      {"complex_gaps", Form::complex, kUnits, false, false, {}, 1, 1},
      // Of one number, or of several so odd that results say little.
      {"zeros", Form::real, {Source::zeros, Structure::general}},
      {"equal", Form::real, {Source::repeated, Structure::general}},
      {"zero_row", Form::real, {Source::units, Structure::zero_row}},
      {"plain", Form::real, {Source::units, Structure::plain}},
      {"identity", Form::real, {Source::units, Structure::identity}},
      {"dominant", Form::real, {Source::units, Structure::dominant}},
      {"edge104", Form::real, {Source::edge104, Structure::general}},
      {"edge307", Form::real, {Source::edge307, Structure::general}},
      {"nans", Form::real, {Source::nans, Structure::general}},
      {"infinities", Form::real, {Source::infinities, Structure::general}},
      {"mixed", Form::real, {Source::mixed, Structure::general}},
  };
  return kKinds;
}

Recipe recipe(const Kind& kind, int rows, int cols) {
  std::uint64_t seed = 0;
  for (const char* c = kind.name; *c != '\0'; ++c)
    seed = seed * 31 + static_cast<unsigned char>(*c);
  seed = (seed << 16) + static_cast<std::uint64_t>(rows * 256 + cols);
  Recipe recipe = array(kind.form, rows, cols, kind.fill, seed);
  const auto count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
  recipe.special = kind.special;
  recipe.gap = kind.gap;
  recipe.place = count / kind.part + (kind.form == Form::complex ? count : 0);
  return recipe;
}

aMatrix* make_matrix(efi::Store& store, std::string_view name, int rows, int cols) {
  for (const Kind& kind : kinds())
    if (name == kind.name) return static_cast<aMatrix*>(make(store, recipe(kind, rows, cols)));
  return nullptr;
}

}  // namespace arguments
