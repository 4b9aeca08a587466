// The smallest useful host: loads a pack, finds a row by name, calls its handler, reads the result.
//
//   minimal_host libmatrix.so        on Windows: minimal_host matrix.dll
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "host/efiutils/evaluator.hpp"
#include "host/efiutils/fault_translation.hpp"
#include "host/efiutils/store.hpp"
#include "library.hpp"
#include "pack/host_interface.hpp"

namespace {

// Arrays come from ::operator new and belong to the matrix from then on.
aMatrix* make_matrix(efi::Store& store, int rows, int cols, const double* column_major) {
  const int count = rows * cols;
  auto* re = static_cast<double*>(::operator new(sizeof(double) * count));
  std::copy_n(column_major, count, re);
  return aMatrix::mk(&store, rows, cols, re, nullptr, sizeof(double) * count);
}

const FunctionEntry* find_row(const FunctionEntry* table, int count, const char* name) {
  const auto* row = std::find_if(table, table + count, [&](const FunctionEntry& entry) {
    return std::strcmp(entry.name->text, name) == 0;
  });
  return row == table + count ? nullptr : row;
}

void show(Anyval* value) {
  if (value->kind == kErrorKind) {
    const auto* error = static_cast<aError*>(value);
    std::printf("error: %s (argument %d)\n", error->message->text, error->arg);
  } else if (value->kind == kMatrixKind) {
    const auto* m = static_cast<aMatrix*>(value);
    for (int i = 0; i < m->rows; ++i)
      for (int j = 0; j < m->cols; ++j) {
        // Without an array of real parts all of them are 0.
        const double x = m->re == nullptr ? 0.0 : m->re[j * m->leading_dimension + i];
        std::printf("%.17g%c", x, j + 1 < m->cols ? ' ' : '\n');
      }
  }
}

}  // namespace

int main(int argc, char** argv) {
  void* pack = open_library(argc > 1 ? argv[1] : kUsualPack);
  if (pack == nullptr) return std::fprintf(stderr, "%s\n", library_error()), 2;
  const auto* table = static_cast<const FunctionEntry*>(find_symbol(pack, "theEfi"));
  const auto* count = static_cast<const std::int32_t*>(find_symbol(pack, "numFuncs"));
  if (table == nullptr || count == nullptr) return std::fprintf(stderr, "no pack\n"), 2;
  const FunctionEntry* lsolve = find_row(table, *count, "lsolve");
  if (lsolve == nullptr) return std::fprintf(stderr, "no lsolve\n"), 2;

  efi::install_fault_translation();
  efi::Store store;          // Owns every value; frees them all at the end.
  efi::Evaluator evaluator;  // What packs call back into.
  EfiCallContext context = {&store, &evaluator};

  const double a[] = {4, 2, 1, 3};  // By columns: [4, 1; 2, 3].
  const double b[] = {1, 2};
  using Handler = Anyval* (*)(EfiCallContext*, Anyval*, Anyval*);
  const auto call = reinterpret_cast<Handler>(lsolve->handler);
  show(call(&context, make_matrix(store, 2, 2, a), make_matrix(store, 2, 1, b)));
  show(call(&context, make_matrix(store, 2, 2, a), make_matrix(store, 1, 2, b)));
}
