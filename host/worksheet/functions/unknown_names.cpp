#include "host/worksheet/functions/unknown_names.hpp"

#include <algorithm>

#include "fmt/format.h"
#include "host/text/nearest.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/functions/builtin.hpp"

namespace worksheet {

namespace {

// Names from other systems, and what is written here. Those of one letter are as they stand, others
// in any case.
constexpr std::pair<std::string_view, std::string_view> kElsewhere[] = {
    {"adjoint", "conj(A')"},
    {"angle", "arg(z)"},
    {"arange", "linspace(a, b, n)"},
    {"arccos", "acos(z)"},
    {"arcsin", "asin(z)"},
    {"arctan", "atan(z)"},
    {"arctan2", "atan2(y, x)"},
    {"average", "mean(A)"},
    {"ceiling", "ceil(x)"},
    {"chol", "cholesky(A)"},
    {"concatenate", "blocks([A, B])"},
    {"cond", "cond2(A)"},
    {"contour", "heatmap(A)"},
    {"csvread", "read(\"file.csv\")"},
    {"csvwrite", "write(\"file.csv\", A)"},
    {"ctranspose", "conj(A')"},
    {"determinant", "det(A)"},
    {"disp", "the expression alone, which shows its value"},
    {"display", "the expression alone, which shows its value"},
    {"e", "exp(1)"},
    {"eig", "eigenvals(M) or eigenvecs(M)"},
    {"eigenvalues", "eigenvals(M)"},
    {"eigenvectors", "eigenvecs(M)"},
    {"eigs", "eigenvals(M)"},
    {"eigvals", "eigenvals(M)"},
    {"eigvecs", "eigenvecs(M)"},
    {"eye", "identity(n)"},
    {"factorial", "gamma(n + 1)"},
    {"false", "0"},
    {"fix", "trunc(x)"},
    {"flip", "reverse(v)"},
    {"flipud", "reverse(A)"},
    {"hcat", "augment(A, B)"},
    {"horzcat", "augment(A, B)"},
    {"hstack", "augment(A, B)"},
    {"i", "1i"},
    {"imag", "im(z)"},
    {"imagesc", "heatmap(A)"},
    {"inf", "1/0"},
    {"int", "trunc(x)"},
    {"inv", "A^-1"},
    {"inverse", "A^-1"},
    {"isempty", "numel(A) == 0"},
    {"j", "1i"},
    {"len", "length(v) or numel(A)"},
    {"linsolve", "lsolve(A, b)"},
    {"ln", "log(z)"},
    {"mldivide", "lsolve(A, b)"},
    {"nan", "0/0"},
    {"ndims", "rows(A) and cols(A)"},
    {"nnz", "sum(A != 0)"},
    {"norm", "norm2(A)"},
    {"phase", "arg(z)"},
    {"pinv", "geninv(A)"},
    {"power", "x^n"},
    {"print", "the expression alone, which shows its value"},
    {"printf", "the expression alone, which shows its value"},
    {"product", "prod(A)"},
    {"readmatrix", "read(\"file.csv\")"},
    {"readtable", "read(\"file.csv\", \"column\")"},
    {"real", "re(z)"},
    {"rem", "mod(x, y)"},
    {"sgn", "sign(z)"},
    {"shape", "rows(A) and cols(A)"},
    {"size", "rows(A) and cols(A)"},
    {"solve", "lsolve(A, b)"},
    {"svdvals", "svds(A)"},
    {"transpose", "A'"},
    {"true", "1"},
    {"vcat", "stack(A, B)"},
    {"vertcat", "stack(A, B)"},
    {"vstack", "stack(A, B)"},
    {"writematrix", "write(\"file.csv\", A)"},
};

std::string_view known_elsewhere(std::string_view name) {
  std::string lower(name);
  // Single letters mean what they mean in their own case only.
  if (name.size() > 1)
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) {
      return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    });
  for (const auto& [other, here] : kElsewhere)
    if (lower == other) return here;
  return {};
}

// The names of functions; with `variables`, also those of variables and constants. A sheet may have
// many of its own and as many mistakes: beyond kMostOwn its names are not looked at.
std::vector<std::string> candidates(const Machine& machine, bool functions_only) {
  constexpr std::size_t kMostOwn = 1000;
  std::vector<std::string> names = builtin_names();
  for (const auto& pack : machine.packs)
    for (const Row& row : pack->rows()) names.push_back(row.name);
  if (machine.variables().size() > kMostOwn) return names;
  for (const auto& [name, variable] : machine.variables())
    if (variable->defined && (!functions_only || is_function(variable->value)))
      names.push_back(name);
  return names;
}

Value unknown(Machine& machine, Span span, std::string_view name, const Variable* variable,
              bool called) {
  if (variable != nullptr && variable->failure.line != 0)
    return machine.fail_because(
        variable->failure, span,
        fmt::format("{} has no value: {} failed", name, variable->failure.words));
  const std::string_view here = known_elsewhere(name);
  return machine.fail(
      span, fmt::format("unknown name: {}{}", name,
                        here.empty() ? suggestion(nearest(name, candidates(machine, called)))
                                     : fmt::format("; did you mean {}?", here)));
}

// "1 argument", of a function of the language or of a pack; empty if it is none.
std::string wanted_arguments(const Machine& machine, std::string_view name) {
  if (const Builtin* builtin = find_builtin(name)) return counts_text(*builtin);
  const Row* const row = machine.find_row(name);
  return row == nullptr ? "" : counted(static_cast<std::int64_t>(row->argument_count), "argument");
}

}  // namespace

Value no_value_error(Machine& machine, Span span, std::string_view name, const Variable* variable) {
  const std::string wanted = wanted_arguments(machine, name);
  if (wanted.empty()) return unknown(machine, span, name, variable, false);
  return machine.fail(span, fmt::format("{0} is a function and takes {1} in parentheses: help {0} "
                                        "says more",
                                        name, wanted));
}

Value no_function_error(Machine& machine, Span span, std::string_view name,
                        const Variable* variable) {
  return unknown(machine, span, name, variable, true);
}

}  // namespace worksheet
