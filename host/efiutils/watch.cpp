#include "host/efiutils/watch.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

#include "pack/frame/fp_control.hpp"

namespace efi {

namespace {

// A sum over an array's bits that a change of any one element alters: the factor is odd.
std::uint64_t checksum(const double* part, std::size_t count) {
  std::uint64_t sum = 0;
  for (std::size_t k = 0; k < count; ++k)
    sum = sum * 0x9E3779B97F4A7C15u + std::bit_cast<std::uint64_t>(part[k]);
  return sum;
}

// Whether something in the value was never written.
bool has_unwritten(const Anyval* value) {
  auto unwritten = [](double x) { return std::bit_cast<std::uint64_t>(x) == kUnwrittenBits; };
  if (value->kind == kScalarKind) {
    const auto* const scalar = static_cast<const aComplex*>(value);
    return unwritten(scalar->re) || unwritten(scalar->im);
  }
  if (value->kind != kMatrixKind) return false;
  const auto* const m = static_cast<const aMatrix*>(value);
  for (const double* part : {m->re, m->im})
    if (part != nullptr && std::any_of(part, part + m->byte_size / sizeof(double), unwritten))
      return true;
  return false;
}

template <class Record>
void append_record(std::vector<std::uint64_t>& words, const Anyval* value) {
  const std::size_t at = words.size();
  words.resize(at + (sizeof(Record) + 7) / 8);
  std::memcpy(&words[at], static_cast<const Record*>(value), sizeof(Record));
}

#if MATRIX_HAS_MXCSR
// The status flags are not control: any arithmetic sets them.
std::uint32_t control_bits() {
  return _mm_getcsr() & ~0x3Fu;
}

std::uint16_t x87_control() {
  std::uint16_t word;
  asm volatile("fnstcw %0" : "=m"(word));
  return word;
}
#endif

}  // namespace

PackWatch::PackWatch(const Store& store, Evaluator& evaluator, std::span<Anyval* const> arguments,
                     Care care)
    : store_(store),
      evaluator_(evaluator),
      care_(care),
      depth_(evaluator.depth()),
      complaints_(evaluator.complaints.size()) {
  arguments_.reserve(arguments.size());
  for (const Anyval* value : arguments) arguments_.push_back({value, words_of(value)});
#if MATRIX_HAS_MXCSR
  mxcsr_ = control_bits();
  x87_ = x87_control();
#endif
}

std::vector<std::uint64_t> PackWatch::words_of(const Anyval* value) const {
  std::vector<std::uint64_t> words;
  if (value->kind == kScalarKind) append_record<aComplex>(words, value);
  if (value->kind != kMatrixKind) return words;
  append_record<aMatrix>(words, value);
  if (care_ == Care::records) return words;
  const auto* const m = static_cast<const aMatrix*>(value);
  for (const double* part : {m->re, m->im})
    words.push_back(part == nullptr ? 0 : checksum(part, m->byte_size / sizeof(double)));
  return words;
}

bool PackWatch::restore_control() {
#if MATRIX_HAS_MXCSR
  if (control_bits() == mxcsr_ && x87_control() == x87_) return true;
  _mm_setcsr(mxcsr_);
  asm volatile("fldcw %0" : : "m"(x87_));
  return false;
#else
  return true;
#endif
}

std::string PackWatch::verdict(const Anyval* result) {
  std::string words;
  if (!restore_control()) words = "changed the floating-point control word";
  if (evaluator_.complaints.size() > complaints_) words = evaluator_.complaints[complaints_];
  if (evaluator_.depth() > depth_) {
    words = "left an evaluator frame open";
    evaluator_.unwind(depth_);
  }
  for (std::size_t k = 0; k < arguments_.size(); ++k)
    if (words_of(arguments_[k].value) != arguments_[k].words)
      words = "changed its argument " + std::to_string(k + 1);
  if (result != nullptr && result != sError_OutOfMemory && !store_.owns(result))
    words = "gave a value that is not the host's";
  else if (result != nullptr && (care_ == Care::elements || result->kind == kScalarKind) &&
           has_unwritten(result))
    words = "left a part of its result unwritten";
  return words;
}

}  // namespace efi
