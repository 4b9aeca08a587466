#include "host/packcheck/watch/snapshot.hpp"

#include <fmt/format.h>

#include <cstring>

#include "host/packcheck/memory/heap.hpp"

namespace packcheck {

namespace {

// How deep values are followed that hold values.
constexpr int kMostDepth = 8;

std::size_t element_count(const aMatrix* matrix) {
  return matrix->byte_size / sizeof(double);
}

struct Words {
  const efi::Store& store;
  std::vector<std::uint64_t> words;

  void add(std::uint64_t word) { words.push_back(word); }
  void add(std::int32_t word) { words.push_back(static_cast<std::uint32_t>(word)); }
  // Arithmetic on a nested element gives a NaN that still holds the address: it is left out.
  void add(double number) {
    std::uint64_t bits;
    std::memcpy(&bits, &number, sizeof bits);
    constexpr std::uint64_t kNestedNan = 0x7FFFFFFFu;
    add((bits >> 32 & kNestedNan) == kNestedNan ? bits >> 32 : bits);
  }
  void add_text(const char* text) {
    for (; *text != '\0'; ++text) add(static_cast<std::int32_t>(*text));
  }

  void add_part(const aMatrix* matrix, const double* part, int depth) {
    add(part == nullptr ? 0 : 1);
    for (std::size_t k = 0; part != nullptr && k < element_count(matrix); ++k)
      if (efi::is_nested_element(part[k]))
        add_value(efi::nested_value(part[k]), depth + 1);
      else
        add(part[k]);
  }

  void add_value(const Anyval* value, int depth) {
    if (value == nullptr || depth > kMostDepth) return add(-1);
    add(value->kind);
    if (value->kind == kScalarKind) {
      add(static_cast<const aComplex*>(value)->re);
      add(static_cast<const aComplex*>(value)->im);
    } else if (value->kind == kStringKind) {
      add_text(static_cast<const sString*>(value)->text);
    } else if (value->kind == kErrorKind) {
      const auto* const error = static_cast<const aError*>(value);
      add(error->mark);
      add(error->arg);
      add_value(error->message, depth + 1);
      add_value(error->value, depth + 1);
    } else if (value->kind == kMatrixKind) {
      const auto* const matrix = static_cast<const aMatrix*>(value);
      add(matrix->rows);
      add(matrix->cols);
      add_part(matrix, matrix->re, depth);
      add_part(matrix, matrix->im, depth);
      for (const aMatrix* part : store.parts(matrix)) add_value(part, depth + 1);
    }
  }
};

}  // namespace

Snapshot::Snapshot(const Anyval* value) {
  take(value, 0);
}

void Snapshot::keep(const char* what, const void* address, std::size_t bytes) {
  if (bytes == 0) return;
  const auto* const from = static_cast<const unsigned char*>(address);
  pieces_.push_back({what, address, {from, from + bytes}});
}

void Snapshot::take_part(const char* what, const aMatrix* matrix, const double* part, int depth) {
  if (part == nullptr) return;
  keep(what, part, matrix->byte_size);
  arrays_.push_back(part);
  for (std::size_t k = 0; k < element_count(matrix); ++k)
    if (efi::is_nested_element(part[k])) take(efi::nested_value(part[k]), depth + 1);
}

void Snapshot::take_matrix(const aMatrix* matrix, int depth) {
  if (depth == 0)
    keep("the record", matrix, sizeof *matrix);
  else
    nested_.push_back({matrix, *matrix});
  take_part("the real array", matrix, matrix->re, depth);
  take_part("the imaginary array", matrix, matrix->im, depth);
}

void Snapshot::take(const Anyval* value, int depth) {
  if (value == nullptr || depth > kMostDepth) return;
  if (value->kind == kMatrixKind) {
    take_matrix(static_cast<const aMatrix*>(value), depth);
  } else if (value->kind == kStringKind) {
    const auto* const string = static_cast<const sString*>(value);
    keep("the record", string, sizeof *string);
    keep("the text", string->text, std::strlen(string->text) + 1);
  } else if (value->kind == kErrorKind) {
    const auto* const error = static_cast<const aError*>(value);
    keep("the record", error, sizeof *error);
    take(error->message, depth + 1);
    take(error->value, depth + 1);
  } else {
    keep("the record", value,
         value->kind == kIdentifierKind ? sizeof(sIdentifier) : sizeof(aComplex));
  }
}

std::string Snapshot::change() const {
  for (const void* array : arrays_) {
    if (!heap::block_size(array)) return "freed an array of";
    if (!heap::guards_intact(array)) return "wrote beside an array of";
  }
  for (const Piece& piece : pieces_)
    if (std::memcmp(piece.address, piece.bytes.data(), piece.bytes.size()) != 0)
      return fmt::format("changed {} of", piece.what);
  for (const NestedRecord& nested : nested_) {
    aMatrix now = *nested.array;
    now.flags |= kIsNestedValue;
    aMatrix before = nested.record;
    before.flags |= kIsNestedValue;
    if (std::memcmp(&now, &before, sizeof now) != 0)
      return "changed the record of an array nested in";
  }
  return {};
}

std::vector<std::uint64_t> meaning(const efi::Store& store, const Anyval* value) {
  Words words{store, {}};
  words.add_value(value, 0);
  return std::move(words.words);
}

}  // namespace packcheck
