#include "host/packcheck/memory/fences.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "host/packcheck/memory/pages.hpp"

namespace packcheck::fences {

namespace {

// Also a multiple of what larger pages would be on the machines with pages of 4 or 16 KiB.
constexpr std::size_t kPage = 16384;
constexpr std::size_t kPages = 8192;
constexpr std::size_t kAlignment = 16;
constexpr unsigned char kSlack = 0xC5;

// What is known of a run of pages, at its first page. `pages` stays when the block is freed, for
// `locate`; `live` does not.
struct Run {
  std::size_t size;
  std::size_t offset;  // Of the block from the start of the run.
  std::size_t pages;
  bool live;
};

char* region = nullptr;
Run runs[kPages];
std::size_t cursor = 1;  // Page 0 is never used: it is the fence in front of page 1.

bool map_region() {
  if (region == nullptr) region = static_cast<char*>(reserve_pages(kPages * kPage));
  return region != nullptr;
}

std::size_t page_of(const void* address) {
  return static_cast<std::size_t>(static_cast<const char*>(address) - region) / kPage;
}

// The first page, from `start` on, of a run of unused pages and an unused one for the fence behind
// them; 0 if none.
std::size_t find_room(std::size_t start, std::size_t pages) {
  std::size_t first = start;
  for (std::size_t page = start; page < kPages; ++page) {
    if (runs[page].live) {
      page += runs[page].pages;  // To the fence behind it, which stays unused.
      first = page + 1;
    } else if (page - first == pages) {
      return first;
    }
  }
  return 0;
}

Run& run_of(const void* block) {
  return runs[page_of(block)];
}

// The slack in front of and behind a block, inside its pages.
template <class Use>
void for_each_slack(std::size_t page, Use use) {
  const Run& run = runs[page];
  char* const start = region + page * kPage;
  use(start, start + run.offset);
  use(start + run.offset + run.size, start + run.pages * kPage);
}

}  // namespace

void* allocate(std::size_t size, Side side, bool exactly) {
  const std::size_t pages = std::max<std::size_t>(1, (size + kPage - 1) / kPage);
  if (pages > kPages / 4 || !map_region()) return nullptr;
  std::size_t page = find_room(cursor, pages);
  if (page == 0) page = find_room(1, pages);
  char* const start = region + page * kPage;
  if (page == 0 || !open_pages(start, pages * kPage)) return nullptr;
  std::size_t offset = side == Side::before ? 0 : pages * kPage - size;
  // A block without bytes starts inside its page all the same, so that it is found again.
  if (size == 0) offset = side == Side::before ? 0 : kPage - kAlignment;
  if (!exactly) offset &= ~(kAlignment - 1);
  std::fill_n(&runs[page], pages + 1, Run{});
  runs[page] = {size, offset, pages, true};
  for_each_slack(page, [](char* from, char* to) {
    std::memset(from, kSlack, static_cast<std::size_t>(to - from));
  });
  cursor = page + pages + 1;
  return start + offset;
}

bool owns(const void* address) {
  const auto offset =
      reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(region);
  return region != nullptr && offset < kPages * kPage;
}

std::optional<std::size_t> block_size(const void* address) {
  const Run& run = run_of(address);
  const char* const start = region + page_of(address) * kPage;
  if (!run.live || address != start + run.offset) return std::nullopt;
  return run.size;
}

bool guards_intact(const void* address) {
  bool intact = true;
  for_each_slack(page_of(address), [&](const char* from, const char* to) {
    intact = intact &&
             std::all_of(from, to, [](char c) { return static_cast<unsigned char>(c) == kSlack; });
  });
  return intact;
}

void release(void* address) {
  Run& run = run_of(address);
  char* const start = region + page_of(address) * kPage;
  close_pages(start, run.pages * kPage);
  run.live = false;
}

// The nearest block: the last one that starts at or in front of the address's page, or the first
// behind that page.
heap::Place locate(const void* address) {
  const char* const at = static_cast<const char*>(address);
  const auto block_of = [](std::size_t page) { return region + page * kPage + runs[page].offset; };
  heap::Place nearest = {heap::Place::elsewhere, kPages * kPage, 0};
  std::size_t page = page_of(address);
  while (page > 0 && runs[page].pages == 0) --page;
  if (const Run& run = runs[page]; run.pages != 0) {
    const auto offset = static_cast<std::size_t>(at - block_of(page));
    if (at >= block_of(page) + run.size && run.live)
      nearest = {heap::Place::behind, offset - run.size, run.size};
    else if (at < block_of(page) + run.size && !run.live)
      nearest = {heap::Place::freed, offset, run.size};
  }
  const std::size_t next = page_of(address) + 1;
  if (nearest.where != heap::Place::freed && next < kPages && runs[next].live) {
    const auto distance = static_cast<std::size_t>(block_of(next) - at);
    if (distance < nearest.distance) nearest = {heap::Place::before, distance, runs[next].size};
  }
  return nearest;
}

}  // namespace packcheck::fences
