// The memory of this process under watch. The executable replaces operator new and, where the C
// library allows it, malloc, for itself and for the packs that it loads.
//
// A block of operator new has guards in front and behind, is filled with a pattern while it is new,
// and rests for a while once it is freed: what is written outside of a live block is
// found when that block is freed, what is written to a freed one when it is used again. On request
// blocks lie against pages that cannot be touched instead, so that reading too far shows as well.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace packcheck::heap {

// What is held: blocks of operator new and their bytes, and blocks of malloc (0 where malloc is not
// replaced).
struct Usage {
  std::int64_t blocks;
  std::int64_t bytes;
  std::int64_t mallocs;
  bool operator==(const Usage&) const = default;
};
Usage usage();

// --- Failing ---

enum class Failing { once, from_then_on };

// From now on the `nth` allocation, counted from 1 (0: none), or every one from there, is refused.
void fail(int nth, Failing how);
// Ends that; true when an allocation was refused.
bool end_failing();
// One allocation, as the host's making of a value is; true when it is refused.
bool refuses();

// --- Where new blocks go, and what they hold ---

// Between guards; with their end, or their start, against an untouchable page.
enum class Placement { guarded, fenced_behind, fenced_before };
void place(Placement placement);

// Makes fenced blocks end exactly at the page, whatever their size: right for arrays of doubles
// that are not promised the alignment of operator new.
void place_exactly(bool exactly);

// What a new block is filled with.
void fill_with(std::uint64_t pattern);
inline constexpr std::uint64_t kMarkedNan = 0x7FF8DEADBEEF5A5Au;
inline constexpr std::uint64_t kMarkedNumber = 0x5123456789ABCDEFu;

// --- What became of a block ---

// The size of the live block that starts at `address`; nothing when there is none. Blocks of malloc
// are not known.
std::optional<std::size_t> block_size(const void* address);

// Whether the guards of that block are as they were.
bool guards_intact(const void* address);

// What has been done against the rules since the last question; null if nothing.
const char* take_complaint();

// Where an address lies that the processor refused.
struct Place {
  enum { elsewhere, behind, before, freed } where;
  std::size_t distance;  // In bytes from the block.
  std::size_t size;      // Of the block.
};
Place locate(const void* address);

}  // namespace packcheck::heap
