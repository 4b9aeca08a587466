#include "host/efiutils/store.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "host/efiutils/system/platform.hpp"

namespace efi {

namespace {

constexpr std::size_t kSlotsPerChunk = 1u << 14;

// The kind of a slot that holds no value, and of one that lists the parts of a joined value.
constexpr std::int32_t kFreeSlot = -1;
constexpr std::int32_t kPartList = -2;

const double kUnwritten = std::bit_cast<double>(kUnwrittenBits);

}  // namespace

Anyval* nested_value(double element) {
  const auto bits = std::bit_cast<std::uint64_t>(element);
  return reinterpret_cast<Anyval*>(static_cast<std::uintptr_t>(bits & 0xFFFFFFFFu));
}

double nested_element(const Anyval* value) {
  const std::uint64_t bits = (std::uint64_t{kNestedMark} << 32) |
                             static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(value));
  return std::bit_cast<double>(bits);
}

struct Store::PartList : Anyval {
  std::int32_t count;
  aMatrix* parts[kMostParts];
};

// What the host keeps in front of a record. Addresses of records fit 32 bits.
struct Store::Header {
  std::uint32_t marked : 1;
  std::uint32_t position : 31;  // Its place in the order of making.
  std::uint32_t link;  // To the list of a joined value's parts; in a free slot to the next one.

  Slot* linked() const { return reinterpret_cast<Slot*>(static_cast<std::uintptr_t>(link)); }
  void set_link(const Slot* slot) {
    link = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(slot));
  }
};

// One value.
struct Store::Slot : Header {
  union {
    Anyval value;
    aComplex scalar;
    aMatrix matrix;
    aString string;
    aError error;
    aFunction function;
    PartList list;
  };
};

Store::Slot* Store::slot_of(const Anyval* value) {
  static_assert(sizeof(Header) % alignof(Slot) == 0, "the record follows the header at once");
  auto* const bytes = reinterpret_cast<char*>(const_cast<Anyval*>(value));
  return reinterpret_cast<Slot*>(bytes - sizeof(Header));
}

Store::~Store() {
  for (Slot* slot : live_) reclaim(slot);
  for (Slot* chunk : chunks_) unmap_low(chunk, kSlotsPerChunk * sizeof(Slot));
}

bool Store::add_chunk() {
  try {
    chunks_.reserve(chunks_.size() + 1);
    live_.reserve((chunks_.size() + 1) * kSlotsPerChunk);
    pending_.reserve(live_.capacity());  // To collect takes no memory: there may be none.
  } catch (const std::bad_alloc&) {
    return false;
  }
  auto* const chunk = static_cast<Slot*>(map_low(kSlotsPerChunk * sizeof(Slot)));
  if (chunk == nullptr) return false;
  chunks_.push_back(chunk);
  touched_ = 0;
  return true;
}

// A slot that has been given back, or else the next one of the newest chunk. The chunk's pages cost
// nothing until they are touched.
Store::Slot* Store::free_slot() {
  if (Slot* const slot = free_) {
    free_ = slot->linked();
    return slot;
  }
  if ((chunks_.empty() || touched_ == kSlotsPerChunk) && !add_chunk()) return nullptr;
  return &chunks_.back()[touched_++];
}

Store::Slot* Store::take(std::int32_t kind) {
  if (refuse != nullptr && refuse()) return nullptr;
  Slot* const slot = free_slot();
  if (slot == nullptr) return nullptr;
  std::memset(static_cast<void*>(slot), 0, sizeof *slot);
  slot->value.kind = kind;
  slot->position = static_cast<std::uint32_t>(live_.size()) & 0x7FFFFFFFu;
  live_.push_back(slot);
  return slot;
}

void Store::reclaim(Slot* slot) {
  if (slot->value.kind == kMatrixKind) {
    ::operator delete(slot->matrix.re);
    ::operator delete(slot->matrix.im);
  } else if (slot->value.kind == kStringKind) {
    ::operator delete(const_cast<char*>(slot->string.text));
  }
  slot->value.kind = kFreeSlot;
  slot->set_link(free_);
  free_ = slot;
}

aComplex* Store::new_scalar(double re, double im) {
  Slot* const slot = take(kScalarKind);
  if (slot == nullptr) return nullptr;
  slot->scalar.re = re;
  slot->scalar.im = im;
  return &slot->scalar;
}

void Store::new_scalar(aComplex** out) {
  *out = new_scalar(kUnwritten, kUnwritten);
}

aMatrix* Store::new_matrix(int rows, int cols, double* re, double* im, unsigned bytes) {
  Slot* const slot = take(kMatrixKind);
  if (slot == nullptr) return nullptr;
  aMatrix& matrix = slot->matrix;
  matrix.leading_dimension = rows;
  matrix.byte_size = bytes;
  matrix.re = re;
  matrix.im = im;
  matrix.rows = rows;
  matrix.cols = cols;
  return &matrix;
}

aString* Store::new_string(const char* text) {
  const std::size_t length = std::strlen(text);
  auto* const copy = static_cast<char*>(::operator new(length + 1, std::nothrow));
  if (copy == nullptr) return nullptr;
  Slot* const slot = take(kStringKind);
  if (slot == nullptr) {
    ::operator delete(copy);
    return nullptr;
  }
  std::memcpy(copy, text, length + 1);
  slot->string.text = copy;
  slot->string.length = static_cast<std::int32_t>(length);
  return &slot->string;
}

aError* Store::new_error(const aString* message, int mark, int arg, Anyval* value) {
  Slot* const slot = take(kErrorKind);
  if (slot == nullptr) return nullptr;
  slot->error.mark = mark;
  slot->error.arg = arg;
  slot->error.message = message;
  slot->error.value = value;
  return &slot->error;
}

aFunction* Store::new_function(void* body) {
  Slot* const slot = take(kFunctionKind);
  if (slot == nullptr) return nullptr;
  slot->function.body = body;
  return &slot->function;
}

bool Store::set_parts(aMatrix* joined, std::span<aMatrix* const> parts) {
  Slot* const slot = take(kPartList);
  if (slot == nullptr) return false;
  slot->list.count = static_cast<std::int32_t>(parts.size());
  std::copy(parts.begin(), parts.end(), slot->list.parts);
  slot_of(joined)->set_link(slot);
  return true;
}

std::span<aMatrix* const> Store::parts(const Anyval* value) const {
  if (!owns(value) || slot_of(value)->link == 0) return {};
  const PartList& list = slot_of(value)->linked()->list;
  return {list.parts, static_cast<std::size_t>(list.count)};
}

bool Store::owns(const Anyval* value) const {
  if (value == nullptr) return false;
  const auto address = reinterpret_cast<std::uintptr_t>(value) - sizeof(Header);
  for (const Slot* chunk : chunks_) {
    const auto offset = address - reinterpret_cast<std::uintptr_t>(chunk);
    const std::size_t slots = chunk == chunks_.back() ? touched_ : kSlotsPerChunk;
    if (offset < slots * sizeof(Slot))
      return offset % sizeof(Slot) == 0 && value->kind != kFreeSlot;
  }
  return false;
}

void Store::mark(const Anyval* value, std::size_t since) {
  if (!owns(value)) return;
  Slot* const slot = slot_of(value);
  if (slot->marked || slot->position < since) return;
  slot->marked = true;
  pending_.push_back(slot);
}

void Store::mark_children(Slot* slot, std::size_t since) {
  if (slot->value.kind == kErrorKind) {
    mark(slot->error.message, since);
    mark(slot->error.value, since);
  } else if (slot->value.kind == kMatrixKind) {
    if (slot->link != 0) mark(&slot->linked()->value, since);
    const std::size_t count = slot->matrix.re == nullptr ? 0 : slot->matrix.byte_size / 8;
    for (std::size_t k = 0; k < count; ++k)
      if (is_nested_element(slot->matrix.re[k])) mark(nested_value(slot->matrix.re[k]), since);
  } else if (slot->value.kind == kPartList) {
    for (int k = 0; k < slot->list.count; ++k) mark(slot->list.parts[k], since);
  }
}

void Store::collect(std::span<Anyval* const> roots, std::size_t since) {
  for (const Anyval* root : roots) mark(root, since);
  while (!pending_.empty()) {
    Slot* const slot = pending_.back();
    pending_.pop_back();
    mark_children(slot, since);
  }
  std::size_t kept = since;
  for (std::size_t k = since; k < live_.size(); ++k) {
    Slot* const slot = live_[k];
    if (slot->marked) {
      slot->marked = false;
      slot->position = static_cast<std::uint32_t>(kept) & 0x7FFFFFFFu;
      live_[kept++] = slot;
    } else {
      reclaim(slot);
    }
  }
  live_.resize(kept);
}

void Store::drop_newest(const Anyval* value) {
  if (live_.empty() || &live_.back()->value != value) return;
  reclaim(live_.back());
  live_.pop_back();
}

}  // namespace efi
