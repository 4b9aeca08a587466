#include "tests/calls/outcome.hpp"

#include <bit>
#include <cstring>
#include <sstream>

namespace calls {

namespace {

// What stands in for values without more to say.
constexpr std::uint64_t kNull = 0xA1, kNested = 0xA2, kAbsentPart = 0xA3;
constexpr std::uint64_t kOneNan = 0x7FF8000000000000u;

void add_part(Hash& hash, const efi::Store& store, const double* part, std::size_t count,
              bool nested) {
  if (part == nullptr) return hash.word(kAbsentPart);
  for (std::size_t k = 0; k < count; ++k) {
    if (nested && efi::is_nested_element(part[k]) && store.owns(efi::nested_value(part[k]))) {
      hash.word(kNested);
      add_value(hash, store, efi::nested_value(part[k]), nested);
    } else {
      hash.number(part[k]);
    }
  }
}

}  // namespace

void Hash::word(std::uint64_t word) {
  for (int byte = 0; byte < 8; ++byte) {
    value ^= (word >> (8 * byte)) & 0xFF;
    value *= 0x100000001B3u;
  }
}

void Hash::text(const char* text) {
  for (; *text != '\0'; ++text) word(static_cast<unsigned char>(*text));
  word(0);
}

void Hash::number(double x) {
  word(x != x ? kOneNan : std::bit_cast<std::uint64_t>(x));
}

void add_value(Hash& hash, const efi::Store& store, const Anyval* value, bool nested) {
  if (value == nullptr) return hash.word(kNull);
  hash.word(static_cast<std::uint64_t>(value->kind));
  if (value->kind == kScalarKind) {
    const auto* const z = static_cast<const aComplex*>(value);
    hash.number(z->re);
    hash.number(z->im);
  } else if (value->kind == kMatrixKind) {
    const auto* const m = static_cast<const aMatrix*>(value);
    for (const std::int32_t n : {m->rows, m->cols, m->leading_dimension})
      hash.word(static_cast<std::uint64_t>(n));
    hash.word(m->byte_size);
    hash.word(m->flags);
    add_part(hash, store, m->re, m->byte_size / sizeof(double), nested);
    add_part(hash, store, m->im, m->byte_size / sizeof(double), nested);
    for (const aMatrix* part : store.parts(m)) add_value(hash, store, part, nested);
  } else if (value->kind == kErrorKind) {
    const auto* const e = static_cast<const aError*>(value);
    hash.word(static_cast<std::uint64_t>(e->mark));
    hash.word(static_cast<std::uint64_t>(e->arg));
    hash.text(e->message->text);
    add_value(hash, store, e->value, nested);
  } else if (value->kind == kStringKind) {
    hash.text(static_cast<const aString*>(value)->text);
  }
}

std::uint64_t bits_of(const efi::Store& store, const Anyval* value, bool nested) {
  Hash hash;
  add_value(hash, store, value, nested);
  return hash.value;
}

const char* fault_word(const Anyval* value) {
  if (value == nullptr || value->kind != kErrorKind) return nullptr;
  const auto* const e = static_cast<const aError*>(value);
  if (e->mark != 0 || e->arg != 0 || e->value != nullptr) return nullptr;
  for (const char* word : {"singularity", "floating point error", "overflow"})
    if (std::strcmp(e->message->text, word) == 0) return word;
  return nullptr;
}

std::string describe(const Anyval* value) {
  if (value == nullptr) return "null";
  std::ostringstream text;
  text.precision(17);
  if (value->kind == kScalarKind) {
    const auto* z = static_cast<const aComplex*>(value);
    text << "number (" << z->re << ", " << z->im << ")";
  } else if (value->kind == kErrorKind) {
    const auto* e = static_cast<const aError*>(value);
    text << "error \"" << e->message->text << "\" mark " << e->mark << " argument " << e->arg;
  } else if (value->kind == kMatrixKind) {
    const auto* m = static_cast<const aMatrix*>(value);
    text << m->rows << " x " << m->cols << (m->re == nullptr ? " lean" : "")
         << (m->im != nullptr ? " complex" : "") << " matrix";
    constexpr int kShown = 12;
    for (int i = 0; i < m->rows && m->rows <= kShown && m->cols <= kShown; ++i) {
      text << "\n ";
      for (int k = i; k < m->rows * m->cols; k += m->rows) {
        text << ' ' << (m->re != nullptr ? m->re[k] : 0.0);
        if (m->im != nullptr) text << std::showpos << m->im[k] << 'i' << std::noshowpos;
      }
    }
  } else {
    text << "value of kind " << value->kind;
  }
  return text.str();
}

}  // namespace calls
