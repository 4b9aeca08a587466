#include "host/arguments/values.hpp"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

namespace arguments {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kLargest = std::numeric_limits<double>::max();

// The kind of a value that no pack knows.
constexpr std::int32_t kUnknownKind = 99;

using NewPart = double* (*)(std::size_t);

struct OperatorDelete {
  void operator()(double* p) const { ::operator delete(p); }
};
using Part = std::unique_ptr<double[], OperatorDelete>;

// Moves the columns apart; between them stands what no function may read.
void open_gaps(const Recipe& recipe, double* part) {
  const std::ptrdiff_t rows = recipe.rows, ld = rows + recipe.gap;
  for (std::ptrdiff_t j = recipe.cols - 1; part != nullptr && j >= 0; --j) {
    std::copy_backward(part + j * rows, part + (j + 1) * rows, part + j * ld + rows);
    std::fill_n(part + j * ld + rows, recipe.gap, kNan);
  }
}

aMatrix* make_array(efi::Store& store, const Recipe& recipe, const std::function<double()>* given,
                    NewPart new_part) {
  const bool has_re = recipe.form == Form::real || recipe.form == Form::complex;
  const bool has_im = recipe.form == Form::imaginary || recipe.form == Form::complex;
  const std::size_t count = std::size_t(recipe.rows) * std::size_t(recipe.cols);
  const std::size_t size = count + std::size_t(recipe.gap) * std::size_t(recipe.cols);
  Part re(has_re ? new_part(size) : nullptr), im(has_im ? new_part(size) : nullptr);
  if ((has_re && !re) || (has_im && !im)) return nullptr;
  Draft draft = {recipe.rows,        recipe.cols,   re.get(), im.get(),
                 recipe.fill.source, {recipe.seed}, given};
  fill(draft, recipe.fill.structure);
  if (recipe.special && count > 0 && (re || im)) {
    const bool imaginary = !re || (im && recipe.place / count % 2 != 0);
    (imaginary ? im : re)[recipe.place % count] = *recipe.special;
  }
  for (double* part : {re.get(), im.get()})
    if (recipe.gap > 0) open_gaps(recipe, part);
  aMatrix* const made = store.new_matrix(recipe.rows, recipe.cols, re.get(), im.get(),
                                         static_cast<unsigned>(8 * size));
  if (made == nullptr) return nullptr;
  made->leading_dimension += recipe.gap;
  re.release(), im.release();
  return made;
}

// The elements are, in turn, scalars, matrices, strings and plain numbers; the seed says with which
// to begin.
Anyval* make_nested(efi::Store& store, const Recipe& recipe, NewPart new_part) {
  aMatrix* const made =
      make_array(store, array(Form::real, recipe.rows, recipe.cols), nullptr, new_part);
  if (made == nullptr) return nullptr;
  const std::size_t count = made->byte_size / sizeof(double);
  for (std::size_t k = 0; k < count; ++k) {
    const Recipe inner[] = {
        scalar(1.5, -2.5), array(Form::complex, 2, 3), {Form::string}, array(Form::real, 1, 1)};
    const auto which = static_cast<std::size_t>((k + recipe.seed) % 5);
    if (which == 4) continue;
    Anyval* const value = make(store, inner[which], nullptr, new_part);
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

double* new_array(std::size_t count) {
  return static_cast<double*>(::operator new(count * sizeof(double), std::nothrow));
}

Anyval* make(efi::Store& store, const Recipe& recipe, const std::function<double()>* given,
             NewPart new_part) {
  switch (recipe.form) {
    case Form::nested:
      return make_nested(store, recipe, new_part);
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
      return make_array(store, recipe, given, new_part);
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

}  // namespace arguments
