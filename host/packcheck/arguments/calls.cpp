#include "host/packcheck/arguments/calls.hpp"

#include <fmt/format.h>

#include <iterator>
#include <limits>

#include "host/arguments/kinds.hpp"
#include "host/arguments/numbers.hpp"

namespace packcheck {

namespace {

using namespace arguments;
using Arguments = std::vector<Recipe>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The size of the square matrices and columns of a base; sizes are changed where they have it.
constexpr int kBaseSize = 3;

// The most places for which all combinations of the forms to begin with are tried.
constexpr int kMostTried = 8000;

constexpr Form kStoredForms[] = {Form::real, Form::complex, Form::imaginary, Form::lean};

constexpr double kSpecials[] = {kNan, kInfinity, -kInfinity};

constexpr Fill kOrdinary = {Source::units, Structure::general};
constexpr Fill kSymmetric = {Source::units, Structure::symmetric};
constexpr Fill kDefinite = {Source::units, Structure::dominant};

const char* const kFormNames[kForms] = {
    "real matrix",   "complex matrix", "imaginary matrix", "matrix without part arrays",
    "nested matrix", "scalar",         "string",           "function",
    "function (8)",  "error value",    "identifier",       "value of an unknown kind"};

const char* const kBehaviourNames[kBehaviours] = {
    "i + 10 j",       "complex",        "NaN",    "huge", "a matrix", "a string", "an error",
    "an error later", "a matrix later", "nothing"};

// In a few words: "complex matrix 3 x 3 (random symmetric)".
std::string describe(const Recipe& recipe) {
  const char* const form = kFormNames[static_cast<int>(recipe.form)];
  if (recipe.form == Form::scalar)
    return recipe.im == 0.0 ? fmt::format("{}", recipe.re)
                            : fmt::format("{}{:+}i", recipe.re, recipe.im);
  if (recipe.form == Form::function || recipe.form == Form::other_function)
    return fmt::format("{} giving {}", form, kBehaviourNames[static_cast<int>(recipe.behaviour)]);
  if (!is_array(recipe.form)) return form;
  const std::string shape = fmt::format("{} {} x {}", form, recipe.rows, recipe.cols);
  const auto& [source, structure] = recipe.fill;
  if (structure == Structure::plain || recipe.form == Form::lean || recipe.form == Form::nested)
    return shape;
  if (recipe.special) return fmt::format("{} (one {})", shape, *recipe.special);
  return fmt::format("{} ({} {})", shape, name_of(source), name_of(structure));
}

// One of each kind, and the arrays that differ most.
std::vector<Recipe> one_of_each_kind() {
  return {scalar(2.0),
          scalar(1.5, -2.0),
          array(Form::real, 3, 3),
          array(Form::complex, 3, 3),
          array(Form::imaginary, 3, 3),
          array(Form::lean, 3, 3),
          array(Form::nested, 3, 3),
          array(Form::nested, 1, 1),
          array(Form::real, 3, 1),
          array(Form::real, 1, 3),
          array(Form::real, 0, 0),
          {.form = Form::string},
          function(Behaviour::sum),
          function(Behaviour::sum, Form::other_function),
          {.form = Form::error},
          {.form = Form::identifier},
          {.form = Form::unknown}};
}

class CallList {
 public:
  CallList(const Target& target, Depth depth, std::uint64_t seed)
      : usual_(with_context(target.function, target.base)),
        full_(depth == Depth::full),
        random_{seed} {
    for (const char c : target.function.name)
      random_.state = random_.state * 31 + static_cast<unsigned char>(c);
  }

  std::vector<Call> make() {
    add_base();
    add_kinds();
    add_shapes();
    add_values();
    add_random(full_ ? 3000 : 150);
    return std::move(calls_);
  }

 private:
  void add(Family family, Arguments arguments) { calls_.push_back({family, std::move(arguments)}); }

  void add_with(Family family, std::size_t place, const Recipe& recipe) {
    Arguments arguments = usual_;
    arguments[place] = recipe;
    add(family, std::move(arguments));
  }

  // The base with all of its arrays in one form and of one size.
  Arguments scaled(Form form, int n, Fill fill = {}) const {
    Arguments arguments = usual_;
    for (Recipe& argument : arguments) {
      if (!is_array(argument.form)) continue;
      const auto scale = [&](int size) { return size == kBaseSize ? n : size; };
      argument = array(form, scale(argument.rows), scale(argument.cols), fill, 7);
    }
    return arguments;
  }

  bool has_arrays() const {
    for (const Recipe& argument : usual_)
      if (is_array(argument.form)) return true;
    return false;
  }

  void add_base() {
    add(Family::base, usual_);
    if (!has_arrays()) return;
    for (const Form form : {Form::complex, Form::imaginary, Form::lean, Form::nested})
      add(Family::base, scaled(form, kBaseSize));
    for (const Fill fill : {kSymmetric, kDefinite, kOrdinary}) {
      add(Family::base, scaled(Form::real, 8, fill));
      add(Family::base, scaled(Form::complex, 5, fill));
    }
  }

  void add_kinds() {
    const auto kinds = one_of_each_kind();
    for (std::size_t place = 0; place < usual_.size(); ++place)
      for (const Recipe& kind : kinds) add_with(Family::kinds, place, kind);
    if (usual_.size() < 2) return;
    for (const Recipe& first : kinds)
      for (const Recipe& second : kinds) {
        Arguments arguments = usual_;
        arguments[0] = first;
        arguments[1] = second;
        add(Family::kinds, std::move(arguments));
      }
  }

  void add_shapes() {
    constexpr int kShapes[][2] = {{0, 0}, {0, 3}, {3, 0}, {1, 1}, {1, 3}, {3, 1}, {2, 3},
                                  {3, 2}, {1, 9}, {9, 1}, {4, 9}, {9, 4}, {5, 5}};
    for (std::size_t place = 0; place < usual_.size(); ++place)
      for (const auto& [rows, cols] : kShapes)
        for (const Form form : kStoredForms)
          if (is_array(usual_[place].form))
            add_with(Family::shapes, place, array(form, rows, cols, kOrdinary, 3));
    std::vector<int> sizes = {0, 1, 2, 4, 7, 8, 9, 16, 17, 33};
    if (full_) sizes.insert(sizes.end(), {31, 32, 63, 64, 65, 100});
    if (!has_arrays()) return;
    for (const int n : sizes)
      for (const Form form : kStoredForms)
        for (const Fill fill : {kOrdinary, kDefinite}) add(Family::shapes, scaled(form, n, fill));
  }

  void add_values() {
    for (std::size_t place = 0; place < usual_.size(); ++place) {
      const Recipe& usual = usual_[place];
      if (is_array(usual.form)) add_array_values(place, usual);
      if (usual.form == Form::scalar) add_numbers(place);
      if (usual.form == Form::function)
        for (int k = 0; k < kBehaviours; ++k)
          add_with(Family::values, place, function(static_cast<Behaviour>(k)));
    }
  }

  void add_array_values(std::size_t place, const Recipe& usual) {
    const auto add_forms = [&](Recipe recipe) {
      for (const Form form : {Form::real, Form::complex}) {
        recipe.form = form;
        add_with(Family::values, place, recipe);
      }
    };
    for (const arguments::Kind& kind : kinds()) add_forms(recipe(kind, usual.rows, usual.cols));
    // A special element is tried at all places of the real and the imaginary part.
    Recipe with_special = array(Form::real, usual.rows, usual.cols, kOrdinary);
    for (const double special : kSpecials)
      for (with_special.place = 0;
           with_special.place < 2u * static_cast<unsigned>(usual.rows * usual.cols);
           ++with_special.place) {
        with_special.special = special;
        add_forms(with_special);
      }
  }

  void add_numbers(std::size_t place) {
    for (const double x : kTroublemakers) {
      add_with(Family::values, place, scalar(x));
      add_with(Family::values, place, scalar(1.0, x));
    }
  }

  void add_random(int count) {
    for (int k = 0; k < count; ++k) {
      const int n = random_.below(random_.one_in(8) ? 24 : 7);
      const bool arrays_alike = random_.one_in(2);
      const Form form = random_stored_form();
      Arguments arguments = usual_;
      for (Recipe& argument : arguments) {
        if (random_.one_in(6))
          argument = random_recipe();
        else if (is_array(argument.form))
          argument = random_array(argument, arrays_alike ? form : random_stored_form(), n);
        else if (argument.form == Form::scalar && random_.one_in(2))
          argument = random_scalar();
        else if (argument.form == Form::function)
          argument.behaviour = static_cast<Behaviour>(random_.below(kBehaviours));
      }
      add(Family::random, std::move(arguments));
    }
  }

  Form random_stored_form() {
    return random_.one_in(2) ? Form::real : kStoredForms[random_.below(4)];
  }

  Recipe random_array(Form form, int rows, int cols) {
    Recipe made =
        recipe(kinds()[static_cast<std::size_t>(random_.below(static_cast<int>(kinds().size())))],
               rows, cols);
    made.form = form;
    made.seed = random_.next() >> 40;
    if (!random_.one_in(8)) return made;
    made.special = kSpecials[random_.below(std::size(kSpecials))];
    made.place = static_cast<std::size_t>(random_.next() >> 40);
    return made;
  }

  Recipe random_array(const Recipe& usual, Form form, int n) {
    const auto scale = [&](int size) { return size == kBaseSize ? n : size; };
    return random_array(form, scale(usual.rows), scale(usual.cols));
  }

  Recipe random_scalar() {
    constexpr int kCount = std::size(kTroublemakers);
    const double re = random_.one_in(2) ? random_.below(6) : kTroublemakers[random_.below(kCount)];
    return scalar(re, random_.one_in(5) ? kTroublemakers[random_.below(kCount)] : 0.0);
  }

  Recipe random_recipe() {
    const auto form = static_cast<Form>(random_.below(kForms));
    if (form == Form::scalar) return random_scalar();
    const int rows = random_.below(6);
    const int cols = random_.below(6);
    if (is_array(form)) return random_array(form, rows, cols);
    return function(static_cast<Behaviour>(random_.below(kBehaviours)), form);
  }

  const Arguments usual_;
  const bool full_;
  Random random_;
  std::vector<Call> calls_;
};

int places_of(const Function& function) {
  return function.argument_count - static_cast<int>(function.context.size());
}

}  // namespace

std::vector<Arguments> first_attempts(const Function& function) {
  const Recipe kinds[] = {
      array(Form::real, kBaseSize, kBaseSize), scalar(1.0), array(Form::real, kBaseSize, 1),
      arguments::function(Behaviour::sum),     scalar(2.0), array(Form::real, 1, kBaseSize)};
  std::vector<Arguments> attempts = {{}};
  for (int place = 0; place < places_of(function); ++place) {
    std::vector<Arguments> longer;
    for (const Arguments& attempt : attempts)
      for (const Recipe& kind : kinds) {
        longer.push_back(attempt);
        longer.back().push_back(kind);
      }
    attempts = std::move(longer);
  }
  if (attempts.size() > kMostTried) attempts.resize(kMostTried);
  return attempts;
}

Arguments fallback_base(const Function& function) {
  return Arguments(static_cast<std::size_t>(places_of(function)),
                   array(Form::real, kBaseSize, kBaseSize));
}

std::vector<Call> calls_of(const Target& target, Depth depth, std::uint64_t seed) {
  return CallList(target, depth, seed).make();
}

Arguments with_context(const Function& function, Arguments arguments) {
  constexpr double kTolerance = 1e-9;
  for (const std::string& variable : function.context)
    arguments.push_back(scalar(variable == "TOL" ? kTolerance : 0.0));
  return arguments;
}

std::string describe(const Function& function, const Call& call) {
  std::string text = function.name + "(";
  const char* separator = "";
  for (const Recipe& argument : call.arguments) {
    text += separator + describe(argument);
    separator = ", ";
  }
  return text + ")";
}

}  // namespace packcheck
