#include "tests/calls/calls.hpp"

#include <algorithm>
#include <initializer_list>
#include <limits>

#include "host/efiutils/function_info.hpp"
#include "pack/exports.hpp"

namespace calls {

namespace {

using Context = EfiCallContext*;
using V = Anyval*;

// The arguments of a square function beyond this size are left out where they come in pairs: the
// time is better spent on other calls.
constexpr int kMostRowsInPairs = 33;

bool is_among(std::initializer_list<const char*> names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Calls a row's handler with as many arguments as its signature has.
Anyval* apply_row(const FunctionEntry& row, Context c, const Arguments& a) {
  const AnyHandler f = row.handler;
  switch (a.size()) {
    case 1:
      return reinterpret_cast<V (*)(Context, V)>(f)(c, a[0]);
    case 2:
      return reinterpret_cast<V (*)(Context, V, V)>(f)(c, a[0], a[1]);
    case 3:
      return reinterpret_cast<V (*)(Context, V, V, V)>(f)(c, a[0], a[1], a[2]);
    default:
      return reinterpret_cast<V (*)(Context, V, V, V, V, V, V)>(f)(c, a[0], a[1], a[2], a[3], a[4],
                                                                   a[5]);
  }
}

// The exports of this form take a matrix, not any value; null stands for the call not made.
template <class Call>
Function on_matrix(const char* name, Call call) {
  return {name, 1, kMatrixKind, [=](const Arguments& a) -> Anyval* {
            return a[0]->kind == kMatrixKind ? call(static_cast<aMatrix*>(a[0])) : nullptr;
          }};
}

Anyval* cinv_value(Context c, aMatrix* m, bool relative_test) {
  if (m->rows != m->cols || m->im == nullptr) return nullptr;
  aMatrix* inverse = nullptr;
  const char* const message = cinv(c, m, &inverse, relative_test);
  return message == nullptr ? inverse : mkError(c, message, 0);
}

// A number close to an eigenvalue of a sample, as a user would pass it on; 0 if there is none.
Anyval* first_eigenvalue(Values& values, aMatrix* m) {
  const Anyval* const found = eigenvals(&values.host.context, m, 1e-9);
  if (found == nullptr || found->kind != kMatrixKind) return values.zero;
  const auto* const column = static_cast<const aMatrix*>(found);
  return values.host.store.new_scalar(column->re == nullptr ? 0.0 : column->re[0],
                                      column->im == nullptr ? 0.0 : column->im[0]);
}

std::vector<Arguments> arguments_without_matrix(const std::string& name, Values& values) {
  std::vector<Arguments> all;
  if (name == "matrix") {
    for (V f : values.bodies)
      for (const int n : {1, 3, 17})
        all.push_back({values.host.store.new_scalar(n, 0), values.host.store.new_scalar(5, 0), f});
  }
  return all;
}

bool takes_matrix(const std::string& name) {
  return name != "matrix" && name != "identity" && name.rfind("identity ", 0) != 0;
}

// Every oddity in every place, the other arguments as they should be.
std::vector<Arguments> odd_arguments(const Function& function, Values& values) {
  Arguments usual;
  if (takes_matrix(function.name))
    usual =
        arguments_with(function.name, values, make_matrix(values.host.store, "definite", 3, 3))[0];
  else if (function.name == "matrix")
    usual = {values.host.store.new_scalar(3, 0), values.host.store.new_scalar(2, 0),
             values.bodies[0]};
  else
    usual = {values.one};
  std::vector<Arguments> all;
  for (std::size_t place = 0; place < function.argument_count; ++place)
    for (V oddity : values.oddities) {
      all.push_back(usual);
      all.back()[place] = oddity;
    }
  return all;
}

bool is_guarded(const std::string& name) {
  return is_among({"rows", "cols", "tr", "submatrix", "cond2", "conde", "condi", "eigenvals",
                   "eigenvecs", "genvals", "genvecs", "norme", "normi", "svd", "inv any"},
                  name);
}

}  // namespace

std::vector<Function> functions(EfiCallContext* c) {
  std::vector<Function> all;
  for (int r = 0; r < numFuncs; ++r) {
    const FunctionEntry& row = theEfi[r];
    const auto count = static_cast<std::size_t>(row.signature->argument_count);
    all.push_back({row.name->text, count, kAnyKind,
                   [&row, c](const Arguments& a) { return apply_row(row, c, a); },
                   row.context != nullptr});
  }
  all.push_back({"identity scalar", 1, kScalarKind, [c](const Arguments& a) -> V {
                   if (a[0]->kind != kScalarKind) return nullptr;
                   return identity(c, static_cast<aComplex*>(a[0]));
                 }});
  all.push_back({"inv any", 1, kAnyKind, [c](const Arguments& a) { return inv(c, a[0]); }});
  all.push_back(on_matrix("inv matrix", [c](aMatrix* m) { return inv(c, m); }));
  all.push_back(on_matrix("cinv", [c](aMatrix* m) { return cinv_value(c, m, false); }));
  all.push_back(on_matrix("cinv relative", [c](aMatrix* m) { return cinv_value(c, m, true); }));
  all.push_back(on_matrix("eigenvals matrix", [c](aMatrix* m) -> V {
    return m->rows == m->cols ? eigenvals(c, m, 1e-9) : nullptr;
  }));
  all.push_back(on_matrix("eigenvecs matrix", [c](aMatrix* m) -> V {
    return m->rows == m->cols ? eigenvecs(c, m) : nullptr;
  }));
  for (Function& function : all) function.is_guarded = is_guarded(function.name);
  return all;
}

std::vector<Arguments> arguments_with(const std::string& name, Values& values, aMatrix* m) {
  Host& host = values.host;
  const auto like = [&](const char* kind) {
    return make_matrix(host.store, kind, m->rows, m->cols);
  };
  const auto column = [&](const char* kind) { return make_matrix(host.store, kind, m->rows, 1); };
  if (name == "last") return {{m, values.zero}, {m, values.one}};
  if (name == "eigenvals" || name == "geninv") return {{m, values.tolerance}, {m, values.zero}};
  if (name == "lsolve") return {{m, column("real")}, {m, column("complex")}};
  if (name == "augment" || name == "stack") return {{m, like("complex")}, {like("lean"), m}};
  if (name == "eigenvec") {
    if (m->rows != m->cols) return {{m, values.zero}};
    return {{m, first_eigenvalue(values, m)}, {m, values.one}};
  }
  if (name == "submatrix") {
    V last_row = host.store.new_scalar(m->rows - 1, 0.0),
      last_col = host.store.new_scalar(m->cols - 1, 0.0);
    return {{m, values.zero, last_row, values.zero, last_col, values.zero},
            {m, last_row, values.zero, last_col, values.zero, values.zero},
            {m, values.one, last_row, values.one, values.one, values.one}};
  }
  if (name == "genvals" || name == "genvecs") {
    std::vector<Arguments> all;
    for (const char* kind : {"real", "deficient", "definite"})
      if (m->rows <= kMostRowsInPairs || kind == std::string("real"))
        all.push_back({m, like(kind), values.tolerance});
    return all;
  }
  return {{m}};
}

bool moves_elements(const std::string& name) {
  return is_among({"reverse", "submatrix", "transpose", "augment", "stack", "diag"}, name);
}

Values::Values(Host& h) : host(h) {
  efi::Store& store = host.store;
  const auto scalar = [&](double re, double im = 0.0) { return store.new_scalar(re, im); };
  zero = scalar(0);
  one = scalar(1);
  tolerance = scalar(1e-9);
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double x : {0.0, 1.0, 2.0, 17.0, -1.0, 2.5, 0.99999999999, 100001.0, 8000001.0,
                         2147483647.0, 2147483648.0, -3e9, 1e300, kNan, kInfinity, -kInfinity})
    numbers.push_back(scalar(x));
  numbers.push_back(scalar(1, 1));
  numbers.push_back(scalar(kNan, kNan));

  EfiCallContext* const c = &host.context;
  bodies = {host.function([=](double i, double j) { return scalar(i - 2 * j); }),
            host.function([=](double i, double j) { return scalar(i, i > 1 ? j : 0); }),
            host.function([=](double i, double) -> V {
              return i > 1 ? mkError(c, "no value", 2) : scalar(i);
            }),
            host.function([&](double, double) -> V { return store.new_string("text"); }),
            host.function([=](double, double) -> V { return mkError(c, "none", 1); })};

  aMatrix* const holder = make_matrix(store, "real", 2, 2);
  const double nested[] = {efi::nested_element(one),
                           efi::nested_element(make_matrix(store, "complex", 2, 3)), 5.0,
                           efi::nested_element(store.new_string("text"))};
  std::copy_n(nested, 4, holder->re);
  holder->flags |= kHoldsNested;
  oddities = numbers;
  oddities.insert(oddities.end(),
                  {store.new_string("text"), bodies[0], holder, make_matrix(store, "real", 0, 0),
                   make_matrix(store, "lean", 0, 3)});
  for (const char* kind : {"real", "complex", "lean"})
    for (const int cols : {1, 2, 3, 4}) oddities.push_back(make_matrix(store, kind, 3, cols));
}

namespace {

void visit_all(const std::string& what, const std::vector<Arguments>& lists, const Visit& visit) {
  for (std::size_t k = 0; k < lists.size(); ++k) visit(what + " #" + std::to_string(k), lists[k]);
}

}  // namespace

void for_odd_calls(const Function& function, Values& values, const Visit& visit) {
  visit_all("oddity", odd_arguments(function, values), visit);
  visit_all("values", arguments_without_matrix(function.name, values), visit);
}

void for_calls_with(const Function& function, Values& values, const Sample& sample,
                    const Visit& visit) {
  if (takes_matrix(function.name))
    visit_all(sample.name, arguments_with(function.name, values, sample.matrix), visit);
}

}  // namespace calls
