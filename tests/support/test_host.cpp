#include "tests/support/test_host.hpp"

#include <cstring>
#include <new>

#include "host/efiutils/fault_translation.hpp"
#include "pack/frame/fp_control.hpp"

namespace test {

namespace {

int to_int(std::size_t n) {
  return static_cast<int>(n);
}

void fail_at(Where where, const std::string& message) {
  ADD_FAILURE_AT(where.file, where.line) << message;
}

template <class Element>
std::vector<Element> by_columns(std::initializer_list<std::initializer_list<Element>> rows) {
  const std::size_t cols = rows.size() == 0 ? 0 : rows.begin()->size();
  std::vector<Element> elements;
  for (std::size_t j = 0; j < cols; ++j)
    for (const auto& row : rows) elements.push_back(row.begin()[j]);
  return elements;
}

template <class Element>
int columns(std::initializer_list<std::initializer_list<Element>> rows) {
  return rows.size() == 0 ? 0 : to_int(rows.begin()->size());
}

}  // namespace

TestHost::TestHost() {
  efi::install_fault_translation();
  store().refuse = allocation_fails;
}

TestHost::~TestHost() {
  EXPECT_EQ(evaluator().depth(), 0u) << "the pack left evaluator frames open";
  for (const std::string& complaint : evaluator().complaints)
    ADD_FAILURE() << "the pack " << complaint;
}

aMatrix* TestHost::make(int rows, int cols, const std::vector<double>* re,
                        const std::vector<double>* im) {
  const std::size_t count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
  const auto copy = [&](const std::vector<double>* part) -> double* {
    if (part == nullptr) return nullptr;
    EXPECT_EQ(part->size(), count);
    auto* const array = static_cast<double*>(::operator new(count * sizeof(double)));
    return std::copy(part->begin(), part->end(), array) - part->size();
  };
  return aMatrix::mk(&store(), rows, cols, copy(re), copy(im), static_cast<unsigned>(8 * count));
}

aMatrix* TestHost::matrix(Rows rows) {
  return matrix(to_int(rows.size()), columns(rows), by_columns(rows));
}

aMatrix* TestHost::matrix(int rows, int cols, const std::vector<double>& column_major) {
  return make(rows, cols, &column_major, nullptr);
}

aMatrix* TestHost::column(const std::vector<double>& elements) {
  return matrix(to_int(elements.size()), 1, elements);
}

aMatrix* TestHost::complex_matrix(ComplexRows rows) {
  return complex_matrix(to_int(rows.size()), columns(rows), by_columns(rows));
}

aMatrix* TestHost::complex_matrix(int rows, int cols, const std::vector<StdComplex>& column_major) {
  std::vector<double> re, im;
  for (const StdComplex& z : column_major) {
    re.push_back(z.real());
    im.push_back(z.imag());
  }
  return make(rows, cols, &re, &im);
}

aMatrix* TestHost::imaginary(Rows rows) {
  const std::vector<double> im = by_columns(rows);
  return make(to_int(rows.size()), columns(rows), nullptr, &im);
}

aMatrix* TestHost::lean(int rows, int cols) {
  return make(rows, cols, nullptr, nullptr);
}

aMatrix* TestHost::nested(int rows, int cols, const std::vector<Anyval*>& column_major) {
  std::vector<double> elements;
  for (const Anyval* value : column_major) elements.push_back(efi::nested_element(value));
  aMatrix* const made = matrix(rows, cols, elements);
  made->flags |= kHoldsNested;
  return made;
}

aComplex* TestHost::scalar(double re, double im) {
  return store().new_scalar(re, im);
}

aString* TestHost::string(const char* text) {
  return store().new_string(text);
}

std::vector<aMatrix*> TestHost::parts(const Anyval* joined) {
  const auto span = store().parts(joined);
  return {span.begin(), span.end()};
}

aMatrix* as_result_matrix(Anyval* value, Where where) {
  static aMatrix none = {};
  if (value != nullptr && value->kind == kMatrixKind) return static_cast<aMatrix*>(value);
  fail_at(where, "not a matrix: " + describe(value));
  return &none;
}

StdComplex number(Anyval* value, Where where) {
  if (value != nullptr && value->kind == kScalarKind) {
    const auto* scalar = static_cast<aComplex*>(value);
    return {scalar->re, scalar->im};
  }
  fail_at(where, "not a number: " + describe(value));
  return {kNan, kNan};
}

double real_number(Anyval* value, Where where) {
  const StdComplex z = number(value, where);
  if (z.imag() == 0.0) return z.real();
  fail_at(where, "not real: " + describe(value));
  return kNan;
}

double re(const aMatrix* m, int i, int j) {
  return m->re == nullptr ? 0.0 : m->re[std::ptrdiff_t{j} * m->leading_dimension + i];
}

double im(const aMatrix* m, int i, int j) {
  return m->im == nullptr ? 0.0 : m->im[std::ptrdiff_t{j} * m->leading_dimension + i];
}

std::vector<StdComplex> elements(const aMatrix* m) {
  std::vector<StdComplex> all;
  for (int j = 0; j < m->cols; ++j)
    for (int i = 0; i < m->rows; ++i) all.emplace_back(re(m, i, j), im(m, i, j));
  return all;
}

std::vector<double> re_parts(const aMatrix* m) {
  std::vector<double> parts;
  for (const StdComplex& z : elements(m)) parts.push_back(z.real());
  return parts;
}

std::vector<double> im_parts(const aMatrix* m) {
  std::vector<double> parts;
  for (const StdComplex& z : elements(m)) parts.push_back(z.imag());
  return parts;
}

std::vector<double> column_major(Rows rows) {
  return by_columns(rows);
}

void expect_matrix(Anyval* value, Rows rows, Where where) {
  const aMatrix* const m = as_result_matrix(value, where);
  if (m->kind != kMatrixKind) return;
  if (m->im != nullptr) fail_at(where, "has an imaginary array: " + describe(value));
  if (m->rows != to_int(rows.size()) || m->cols != columns(rows) || re_parts(m) != by_columns(rows))
    fail_at(where, "got " + describe(value));
}

void expect_complex_matrix(Anyval* value, ComplexRows rows, Where where) {
  const aMatrix* const m = as_result_matrix(value, where);
  if (m->kind != kMatrixKind) return;
  if (m->im == nullptr) fail_at(where, "has no imaginary array: " + describe(value));
  if (m->rows != to_int(rows.size()) || m->cols != columns(rows) || elements(m) != by_columns(rows))
    fail_at(where, "got " + describe(value));
}

void expect_number(Anyval* value, double re, double im, Where where) {
  const StdComplex z = number(value, where);
  if (z != StdComplex(re, im)) fail_at(where, "got " + describe(value));
}

void expect_error(Anyval* value, const std::string& message, int mark, int arg,
                  const Anyval* carried, Where where) {
  if (value == nullptr || value->kind != kErrorKind)
    return fail_at(where, "not the error \"" + message + "\": " + describe(value));
  const auto* const error = static_cast<const aError*>(value);
  if (error->message->text != message || error->mark != mark || error->arg != arg)
    fail_at(where, "not \"" + message + "\" with mark " + std::to_string(mark) + ", argument " +
                       std::to_string(arg) + ": " + describe(value));
  if (error->value != carried)
    fail_at(where, "carries " + describe(error->value) + ", not " + describe(carried));
}

void expect_out_of_memory(Anyval* value, Where where) {
  if (value != sError_OutOfMemory)
    fail_at(where, "not the value for exhausted memory: " + describe(value));
}

}  // namespace test
