#include "host/packcheck/recipe.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <new>
#include <utility>

#include "host/packcheck/heap.hpp"

namespace packcheck {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallestNormal = std::numeric_limits<double>::min();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();

// The kind of a value that no pack knows.
constexpr std::int32_t kUnknownKind = 99;

const char* const kFormNames[kForms] = {
    "real matrix",   "complex matrix", "imaginary matrix", "matrix without part arrays",
    "nested matrix", "scalar",         "string",           "function",
    "function (8)",  "error value",    "identifier",       "value of an unknown kind"};

const char* const kFillNames[kFills] = {
    "",         "integers", "random",   "symmetric", "positive definite", "triangular",
    "identity", "zeros",    "-0.0",     "all equal", "a zero row",        "a zero column",
    "graded",   "tiny",     "denormal", "huge",      "around 1e104",      "around 1e307",
    "one NaN",  "one inf",  "one -inf", "all NaN",   "all infinite",      "mixed"};

const char* const kBehaviourNames[kBehaviours] = {
    "i + 10 j",       "complex",        "NaN",    "huge", "a matrix", "a string", "an error",
    "an error later", "a matrix later", "nothing"};

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

// What stands at the one special place; nothing where the fill has none.
double special_element(Fill fill) {
  return fill == Fill::one_nan ? kNan : fill == Fill::one_infinity ? kInfinity : -kInfinity;
}

bool has_special(Fill fill) {
  return fill == Fill::one_nan || fill == Fill::one_infinity || fill == Fill::one_minus_infinity;
}

struct OperatorDelete {
  void operator()(double* p) const { ::operator delete(p); }
};
using Part = std::unique_ptr<double[], OperatorDelete>;

Part new_part(std::size_t count) {
  heap::place_exactly(true);
  Part part(static_cast<double*>(::operator new(count * sizeof(double), std::nothrow)));
  heap::place_exactly(false);
  return part;
}

// One part array by the recipe; `which` sets the imaginary part apart from the real one.
Part make_part(const Recipe& recipe, std::uint64_t which) {
  const auto count = static_cast<std::size_t>(recipe.rows) * static_cast<std::size_t>(recipe.cols);
  Part part = new_part(count);
  if (!part) return nullptr;
  Recipe of_part = recipe;
  of_part.seed += which << 32;
  // A plain or identity matrix has imaginary parts that differ from its real ones.
  const double scale = which != 0 && recipe.fill == Fill::plain ? 0.25 : 1.0;
  for (std::size_t k = 0; k < count; ++k) {
    const auto rows = static_cast<std::size_t>(recipe.rows);
    part[k] = scale * element(of_part, static_cast<int>(k % rows), static_cast<int>(k / rows));
  }
  // The special place is in one part only.
  if (has_special(recipe.fill) && count > 0 &&
      (recipe.form != Form::complex || which == recipe.seed % 2))
    part[recipe.seed / 2 % count] = special_element(recipe.fill);
  return part;
}

Anyval* make_array(efi::Store& store, const Recipe& recipe) {
  const bool has_re = recipe.form == Form::real || recipe.form == Form::complex;
  const bool has_im = recipe.form == Form::imaginary || recipe.form == Form::complex;
  Part re, im;
  if (has_re && !(re = make_part(recipe, 0))) return nullptr;
  if (has_im && !(im = make_part(recipe, 1))) return nullptr;
  const auto bytes = static_cast<unsigned>(recipe.rows) * static_cast<unsigned>(recipe.cols) * 8u;
  aMatrix* const made = store.new_matrix(recipe.rows, recipe.cols, re.get(), im.get(), bytes);
  if (made == nullptr) return nullptr;
  re.release();
  im.release();
  return made;
}

// The elements are, in turn, scalars, matrices, strings and plain numbers; the seed says with which
// to begin.
Anyval* make_nested(efi::Store& store, const Recipe& recipe) {
  auto* const made =
      static_cast<aMatrix*>(make_array(store, array(Form::real, recipe.rows, recipe.cols)));
  if (made == nullptr) return nullptr;
  const std::size_t count = made->byte_size / sizeof(double);
  for (std::size_t k = 0; k < count; ++k) {
    const Recipe inner[] = {
        scalar(1.5, -2.5), array(Form::complex, 2, 3), {Form::string}, array(Form::real, 1, 1)};
    const std::size_t which = (k + recipe.seed) % 5;
    if (which == 4) continue;
    Anyval* const value = make(store, inner[which]);
    if (value == nullptr) return nullptr;
    made->re[k] = efi::nested_element(value);
  }
  if (count > 0) made->flags |= kHoldsNested;
  return made;
}

Anyval* make_function(efi::Store& store, const Recipe& recipe) {
  // The body is the behaviour; no address is needed.
  auto* const body = reinterpret_cast<void*>(static_cast<std::uintptr_t>(recipe.behaviour));
  efi::aFunction* const made = store.new_function(body);
  if (made != nullptr && recipe.form == Form::other_function) made->kind = kOtherFunctionKind;
  return made;
}

Anyval* make_error(efi::Store& store) {
  const aString* const message = store.new_string("an error of the host");
  return message == nullptr ? nullptr : store.new_error(message, 0, 1, nullptr);
}

Anyval* make_unknown(efi::Store& store) {
  aComplex* const made = store.new_scalar(1.0, 0.0);
  if (made != nullptr) made->kind = kUnknownKind;
  return made;
}

}  // namespace

Recipe scalar(double re, double im) {
  return {.form = Form::scalar, .re = re, .im = im};
}

Recipe array(Form form, int rows, int cols, Fill fill, std::uint64_t seed) {
  return {.form = form, .rows = rows, .cols = cols, .fill = fill, .seed = seed};
}

Recipe function(Behaviour behaviour, Form form) {
  return {.form = form, .behaviour = behaviour};
}

std::string describe(const Recipe& recipe) {
  const char* const form = kFormNames[static_cast<int>(recipe.form)];
  if (recipe.form == Form::scalar)
    return recipe.im == 0.0 ? fmt::format("{}", recipe.re)
                            : fmt::format("{}{:+}i", recipe.re, recipe.im);
  if (recipe.form == Form::function || recipe.form == Form::other_function)
    return fmt::format("{} giving {}", form, kBehaviourNames[static_cast<int>(recipe.behaviour)]);
  if (!is_array(recipe.form)) return form;
  const std::string shape = fmt::format("{} {} x {}", form, recipe.rows, recipe.cols);
  if (recipe.fill == Fill::plain || recipe.form == Form::lean || recipe.form == Form::nested)
    return shape;
  return fmt::format("{} ({})", shape, kFillNames[static_cast<int>(recipe.fill)]);
}

Anyval* make(efi::Store& store, const Recipe& recipe) {
  switch (recipe.form) {
    case Form::nested:
      return make_nested(store, recipe);
    case Form::scalar:
      return store.new_scalar(recipe.re, recipe.im);
    case Form::string:
      return store.new_string("text");
    case Form::function:
    case Form::other_function:
      return make_function(store, recipe);
    case Form::error:
      return make_error(store);
    case Form::identifier:
      return ORIGIN_sUnIdent;
    case Form::unknown:
      return make_unknown(store);
    default:
      return make_array(store, recipe);
  }
}

Anyval* apply(efi::Store& store, Anyval* function, const sCons* arguments) {
  const auto index = [](const sCons* cell) { return static_cast<const aComplex*>(cell->car)->re; };
  const double i = index(arguments);
  const double j = index(arguments->cdr);
  const auto body = reinterpret_cast<std::uintptr_t>(static_cast<efi::aFunction*>(function)->body);
  const bool late = i + j >= 1.0;
  switch (static_cast<Behaviour>(body)) {
    case Behaviour::complex:
      return store.new_scalar(i, j);
    case Behaviour::nan:
      return store.new_scalar(kNan, 0.0);
    case Behaviour::huge:
      return store.new_scalar(kLargest, -kLargest);
    case Behaviour::matrix:
      return make(store, array(Form::real, 2, 2));
    case Behaviour::string:
      return store.new_string("text");
    case Behaviour::error:
      return make_error(store);
    case Behaviour::late_error:
      return late ? make_error(store) : store.new_scalar(1.0, 0.0);
    case Behaviour::late_matrix:
      return late ? make(store, array(Form::real, 2, 2)) : store.new_scalar(1.0, 0.0);
    case Behaviour::nothing:
      return nullptr;
    default:
      return store.new_scalar(i + 10.0 * j, 0.0);
  }
}

std::uint64_t Random::next() {
  std::uint64_t z = state += 0x9E3779B97F4A7C15u;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  return z ^ (z >> 31);
}

int Random::below(int n) {
  return static_cast<int>(next() % static_cast<std::uint64_t>(n));
}

double Random::unit() {
  return static_cast<double>(next() >> 11) * 0x1p-53;
}

}  // namespace packcheck
