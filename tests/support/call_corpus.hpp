// Calls of every row and of every export on representative arguments, and values as words, to
// compare them bit for bit.
#pragma once

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "host/efiutils/function_info.hpp"
#include "pack/exports.hpp"
#include "tests/support/test_host.hpp"

namespace test {

// A value written out as words, so that two of them can be compared bit for bit. A nested element
// is written as the value that it holds: addresses differ from host to host. So does a NaN that
// arithmetic made of one: every NaN is written alike.
inline void write_words(const Anyval* value, TestHost& host, std::vector<std::uint64_t>& words) {
  const auto add_doubles = [&](const double* x, std::size_t n) {
    words.push_back(x != nullptr);
    for (std::size_t k = 0; x != nullptr && k < n; ++k) {
      if (efi::is_nested_element(x[k])) {
        write_words(efi::nested_value(x[k]), host, words);
      } else {
        const double element = std::isnan(x[k]) ? std::numeric_limits<double>::quiet_NaN() : x[k];
        words.emplace_back();
        std::memcpy(&words.back(), &element, sizeof(double));
      }
    }
  };
  if (value == nullptr) return;
  words.push_back(static_cast<std::uint64_t>(value->kind));
  if (value->kind == kScalarKind) {
    add_doubles(&static_cast<const aComplex*>(value)->re, 2);
  } else if (value->kind == kMatrixKind) {
    const auto* m = static_cast<const aMatrix*>(value);
    for (const auto n : {m->rows, m->cols, m->leading_dimension})
      words.push_back(static_cast<std::uint64_t>(n));
    words.push_back(m->flags);
    add_doubles(m->re, m->byte_size / sizeof(double));
    add_doubles(m->im, m->byte_size / sizeof(double));
    for (const aMatrix* part : host.parts(m)) write_words(part, host, words);
  } else if (value->kind == kErrorKind) {
    const auto* error = static_cast<const aError*>(value);
    words.push_back(static_cast<std::uint64_t>(error->mark));
    words.push_back(static_cast<std::uint64_t>(error->arg));
    words.push_back(std::hash<std::string>{}(error->message->text));
  }
}

inline std::vector<std::uint64_t> words_of(const Anyval* value, TestHost& host) {
  std::vector<std::uint64_t> words;
  write_words(value, host, words);
  return words;
}

// Calls a row's handler with as many arguments as its signature has. Not inlined: the compiler
// would see arguments that a known list does not have.
[[gnu::noinline]] inline Anyval* apply_row(const FunctionEntry& row, EfiCallContext* c,
                                           const std::vector<Anyval*>& a) {
  using V = Anyval*;
  using C = EfiCallContext*;
  switch (row.signature->argument_count) {
    case 1:
      return reinterpret_cast<V (*)(C, V)>(row.handler)(c, a[0]);
    case 2:
      return reinterpret_cast<V (*)(C, V, V)>(row.handler)(c, a[0], a[1]);
    case 3:
      return reinterpret_cast<V (*)(C, V, V, V)>(row.handler)(c, a[0], a[1], a[2]);
    default:
      return reinterpret_cast<V (*)(C, V, V, V, V, V, V)>(row.handler)(c, a[0], a[1], a[2], a[3],
                                                                       a[4], a[5]);
  }
}

struct Call {
  std::string name;
  std::vector<Anyval*> arguments;
  std::function<Anyval*()> run;
};

// Numbers between -1 and 1, the same ones each time.
template <class Element>
std::vector<Element> random_elements(std::size_t count) {
  std::mt19937 random(1);
  const auto next = [&] { return static_cast<double>(random()) / 2147483648.0 - 1.0; };
  std::vector<Element> elements;
  for (std::size_t k = 0; k < count; ++k) {
    if constexpr (std::is_same_v<Element, double>)
      elements.push_back(next());
    else
      elements.emplace_back(next(), next());
  }
  return elements;
}

class CallCorpus {
 public:
  // Calls of every row, and of every export that is not a row, with each of the first arguments.
  std::vector<Call> calls() {
    std::vector<Call> all;
    for (std::size_t k = 0; k < firsts.size(); ++k) {
      Anyval* a = firsts[k];
      const std::string with = " with first argument " + std::to_string(k);
      for (int r = 0; r < numFuncs; ++r) {
        const FunctionEntry& row = theEfi[r];
        const std::vector<Anyval*> arguments = arguments_of(row.name->text, a);
        all.push_back({row.name->text + with, arguments,
                       [=, this, &row] { return apply_row(row, context, arguments); }});
      }
      all.push_back({"inv" + with, {a}, [=, this] { return inv(context, a); }});
      if (a->kind != kMatrixKind) continue;
      auto* m = static_cast<aMatrix*>(a);
      all.push_back({"inv matrix" + with, {a}, [=, this] { return inv(context, m); }});
      all.push_back(
          {"eigenvals matrix" + with, {a}, [=, this] { return eigenvals(context, m, 1e-9); }});
      all.push_back({"eigenvecs matrix" + with, {a}, [=, this] { return eigenvecs(context, m); }});
      if (m->rows == m->cols && m->im != nullptr) {
        all.push_back({"cinv" + with, {a}, [=, this]() -> Anyval* {
                         aMatrix* inverse = nullptr;
                         const char* message = cinv(context, m, &inverse, false);
                         return message == nullptr ? inverse : mkError(context, message, 0);
                       }});
      }
    }
    for (int r = 0; r < numFuncs; ++r) {
      const FunctionEntry& row = theEfi[r];
      const std::string name = row.name->text;
      if (name != "genvals" && name != "genvecs") continue;
      const std::vector<Anyval*> arguments = {second, singular, tolerance};
      all.push_back({name + " with an infinite eigenvalue", arguments,
                     [=, this, &row] { return apply_row(row, context, arguments); }});
    }
    all.push_back({"identity of order", {}, [=, this] { return identity(context, 3); }});
    all.push_back({"identity of number", {three}, [=, this] { return identity(context, three); }});
    return all;
  }

  std::vector<Anyval*> arguments_of(const std::string& name, Anyval* a) {
    if (name == "identity") return {three};
    if (name == "last") return {a, zero};
    if (name == "submatrix") return {a, zero, one, one, zero, zero};
    if (name == "augment" || name == "stack") return {a, a};
    if (name == "matrix") return {three, three, function};
    if (name == "eigenvals" || name == "geninv") return {a, tolerance};
    if (name == "eigenvec") return {a, one};
    if (name == "genvals" || name == "genvecs") return {a, is_large(a) ? large : second, tolerance};
    if (name == "lsolve") return {a, is_large(a) ? large_vector : vector};
    return {a};
  }

  TestHost host;
  EfiCallContext* context = host.context();
  Anyval* zero = host.scalar(0);
  Anyval* one = host.scalar(1);
  aComplex* three = host.scalar(3);
  Anyval* tolerance = host.scalar(1e-9);
  Anyval* complex_value = host.scalar(1, 2);
  Anyval* function = host.function([=, this](Anyval*, Anyval*) { return complex_value; });
  aMatrix* vector = host.column({1, 2, 3});
  aMatrix* second = host.matrix({{3, 1, 0}, {1, 3, 1}, {0, 1, 3}});
  aMatrix* singular = host.matrix({{1, 0, 0}, {0, 2, 0}, {0, 0, 0}});
  // Of an order that is no multiple of any block of the kernels.
  static constexpr int kLarge = 37;
  aMatrix* large = host.matrix(kLarge, kLarge, random_elements<double>(kLarge* kLarge));
  aMatrix* large_vector = host.column(random_elements<double>(kLarge));
  std::vector<Anyval*> firsts = {
      host.matrix({{4, 1, 2}, {1, 5, 3}, {2, 3, 6}}),    // Symmetric positive definite.
      host.matrix({{0, 2, 1}, {-3, 1, 4}, {5, -2, 1}}),  // With a complex pair.
      host.complex_matrix({{{1, 2}, 3, {0, 1}}, {{4, -1}, 5, 2}, {6, {7, 1}, {1, 9}}}),
      host.matrix({{1, 2}, {3, 5}, {6, 7}}),
      host.column({3, 1, 2}),
      host.imaginary({{1, 2, 0}, {2, 0, 4}, {0, 1, 1}}),
      host.lean(3, 3),
      host.nested(2, 2, {host.scalar(1, 2), host.string("a"), host.matrix({{1}}), three}),
      host.scalar(2, 1),
      host.string("text"),
      large,
      host.complex_matrix(kLarge, kLarge, random_elements<Complex>(kLarge* kLarge)),
  };

 private:
  bool is_large(const Anyval* a) const {
    return a->kind == kMatrixKind && static_cast<const aMatrix*>(a)->rows == kLarge;
  }
};

}  // namespace test
