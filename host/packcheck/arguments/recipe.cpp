#include "host/packcheck/arguments/recipe.hpp"

#include <fmt/format.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <optional>

#include "host/packcheck/arguments/elements.hpp"
#include "host/packcheck/watch/heap.hpp"

namespace packcheck {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();

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

// What stands at the one special place of an array.
std::optional<double> special_element(Fill fill) {
  switch (fill) {
    case Fill::one_nan:
      return kNan;
    case Fill::one_infinity:
      return kInfinity;
    case Fill::one_minus_infinity:
      return -kInfinity;
    default:
      return std::nullopt;
  }
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
  const bool here = recipe.form != Form::complex || which == recipe.seed % 2;
  if (const auto special = special_element(recipe.fill); special && here && count > 0)
    part[recipe.seed / 2 % count] = *special;
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

}  // namespace packcheck
