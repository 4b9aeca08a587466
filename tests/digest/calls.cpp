#include "tests/digest/calls.hpp"

#include <algorithm>
#include <initializer_list>
#include <limits>

#include "host/efiutils/function_info.hpp"
#include "pack/exports.hpp"

namespace digest {

namespace {

using Context = EfiCallContext*;
using V = Anyval*;

// The arguments of a square function beyond this size are left out where they come in pairs: the
// time is better spent on other calls.
constexpr int kMostRowsInPairs = 33;

bool is_among(std::initializer_list<const char*> names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

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
auto on_matrix(Call call) {
  return [=](const Arguments& a) -> Anyval* {
    return a[0]->kind == kMatrixKind ? call(static_cast<aMatrix*>(a[0])) : nullptr;
  };
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
  return values.host.scalar(column->re == nullptr ? 0.0 : column->re[0],
                            column->im == nullptr ? 0.0 : column->im[0]);
}

// The argument lists in which the matrix m stands first.
std::vector<Arguments> arguments_with(const std::string& name, Values& values, aMatrix* m) {
  Host& host = values.host;
  const auto like = [&](const char* kind) { return make_matrix(host, kind, m->rows, m->cols); };
  const auto column = [&](const char* kind) { return make_matrix(host, kind, m->rows, 1); };
  if (name == "last") return {{m, values.zero}, {m, values.one}};
  if (name == "eigenvals" || name == "geninv") return {{m, values.tolerance}, {m, values.zero}};
  if (name == "lsolve") return {{m, column("real")}, {m, column("complex")}};
  if (name == "augment" || name == "stack") return {{m, like("complex")}, {like("lean"), m}};
  if (name == "eigenvec") {
    if (m->rows != m->cols) return {{m, values.zero}};
    return {{m, first_eigenvalue(values, m)}, {m, values.one}};
  }
  if (name == "submatrix") {
    V last_row = host.scalar(m->rows - 1), last_col = host.scalar(m->cols - 1);
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

std::vector<Arguments> arguments_without_matrix(const std::string& name, Values& values) {
  std::vector<Arguments> all;
  if (name == "matrix") {
    for (V f : values.bodies)
      for (const int n : {1, 3, 17})
        all.push_back({values.host.scalar(n), values.host.scalar(5), f});
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
    usual = arguments_with(function.name, values, make_matrix(values.host, "definite", 3, 3))[0];
  else if (function.name == "matrix")
    usual = {values.host.scalar(3), values.host.scalar(2), values.bodies[0]};
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

}  // namespace

std::vector<Function> functions(Host& host) {
  const Context c = &host.context;
  std::vector<Function> all;
  for (int r = 0; r < numFuncs; ++r) {
    const FunctionEntry& row = theEfi[r];
    const auto count = static_cast<std::size_t>(row.signature->argument_count);
    all.push_back(
        {row.name->text, count, [&row, c](const Arguments& a) { return apply_row(row, c, a); }});
  }
  all.push_back({"identity scalar", 1, [c](const Arguments& a) -> V {
                   if (a[0]->kind != kScalarKind) return nullptr;
                   return identity(c, static_cast<aComplex*>(a[0]));
                 }});
  all.push_back({"inv any", 1, [c](const Arguments& a) { return inv(c, a[0]); }});
  all.push_back({"inv matrix", 1, on_matrix([c](aMatrix* m) { return inv(c, m); })});
  all.push_back({"cinv", 1, on_matrix([c](aMatrix* m) { return cinv_value(c, m, false); })});
  all.push_back(
      {"cinv relative", 1, on_matrix([c](aMatrix* m) { return cinv_value(c, m, true); })});
  all.push_back({"eigenvals matrix", 1, on_matrix([c](aMatrix* m) -> V {
                   return m->rows == m->cols ? eigenvals(c, m, 1e-9) : nullptr;
                 })});
  all.push_back({"eigenvecs matrix", 1, on_matrix([c](aMatrix* m) -> V {
                   return m->rows == m->cols ? eigenvecs(c, m) : nullptr;
                 })});
  return all;
}

bool is_guarded(const std::string& name) {
  return is_among({"rows", "cols", "tr", "submatrix", "cond2", "conde", "condi", "eigenvals",
                   "eigenvecs", "genvals", "genvecs", "norme", "normi", "svd", "inv any"},
                  name);
}

bool moves_elements(const std::string& name) {
  return is_among({"reverse", "submatrix", "transpose", "augment", "stack", "diag"}, name);
}

Values::Values(Host& h) : host(h), samples(make_samples(h)) {
  zero = host.scalar(0);
  one = host.scalar(1);
  tolerance = host.scalar(1e-9);
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double x : {0.0, 1.0, 2.0, 17.0, -1.0, 2.5, 0.99999999999, 100001.0, 8000001.0,
                         2147483647.0, 2147483648.0, -3e9, 1e300, kNan, kInfinity, -kInfinity})
    numbers.push_back(host.scalar(x));
  numbers.push_back(host.scalar(1, 1));
  numbers.push_back(host.scalar(kNan, kNan));

  bodies = {
      host.function([](Host& on, double i, double j) { return on.scalar(i - 2 * j); }),
      host.function([](Host& on, double i, double j) { return on.scalar(i, i > 1 ? j : 0); }),
      host.function([](Host& on, double i, double) -> V {
        return i > 1 ? mkError(&on.context, "no value", 2) : on.scalar(i);
      }),
      host.function([](Host& on, double, double) -> V { return on.store.new_string("text"); }),
      host.function([](Host& on, double, double) -> V { return mkError(&on.context, "none", 1); })};

  const std::vector<double> nested = {efi::nested_element(one),
                                      efi::nested_element(make_matrix(host, "complex", 2, 3)), 5.0,
                                      efi::nested_element(host.store.new_string("text"))};
  aMatrix* const holder = host.matrix(2, 2, &nested, nullptr);
  holder->flags |= kHoldsNested;
  const std::vector<double> none;
  oddities = numbers;
  oddities.insert(oddities.end(),
                  {host.store.new_string("text"), bodies[0], holder,
                   host.matrix(0, 0, &none, nullptr), host.matrix(0, 3, nullptr, nullptr)});
  for (const char* kind : {"real", "complex", "lean"})
    for (const int cols : {1, 2, 3, 4}) oddities.push_back(make_matrix(host, kind, 3, cols));
}

void run_calls(const Function& function, Values& values, const Visit& visit) {
  const std::size_t kept = values.host.store.size();
  const auto call_all = [&](const std::string& what, const std::vector<Arguments>& lists) {
    for (std::size_t k = 0; k < lists.size(); ++k)
      visit(what + " #" + std::to_string(k), function.call(lists[k]));
    values.host.store.collect({}, kept);
  };
  call_all("oddity", odd_arguments(function, values));
  call_all("values", arguments_without_matrix(function.name, values));
  if (!takes_matrix(function.name)) return;
  for (const Sample& sample : values.samples)
    call_all(sample.name, arguments_with(function.name, values, sample.matrix));
}

}  // namespace digest
