#include "tests/support/allocation_faults.hpp"

#include <atomic>
#include <cstdlib>
#include <new>

namespace test {

namespace {

bool active = false;
int asked_for = 0;
int nth_to_fail = 0;
Failing how = Failing::once;
bool failed = false;
std::atomic<long> live = 0;

void* allocate(std::size_t bytes) {
  void* const p = allocation_fails() ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
  if (p != nullptr) ++live;
  return p;
}

void deallocate(void* p) {
  if (p != nullptr) --live;
  std::free(p);
}

void* allocate_or_throw(std::size_t bytes) {
  if (void* p = allocate(bytes)) return p;
  throw std::bad_alloc();
}

}  // namespace

AllocationFaults::AllocationFaults(int nth, Failing failing) {
  asked_for = 0;
  nth_to_fail = nth;
  how = failing;
  failed = false;
  active = true;
}

AllocationFaults::~AllocationFaults() {
  active = false;
}

int AllocationFaults::count() const {
  return asked_for;
}

bool AllocationFaults::happened() const {
  return failed;
}

bool allocation_fails() {
  if (!active) return false;
  ++asked_for;
  const bool fails =
      nth_to_fail != 0 &&
      (asked_for == nth_to_fail || (how == Failing::from_then_on && asked_for > nth_to_fail));
  failed = failed || fails;
  return fails;
}

long live_blocks() {
  return live;
}

}  // namespace test

void* operator new(std::size_t bytes) {
  return test::allocate_or_throw(bytes);
}
void* operator new[](std::size_t bytes) {
  return test::allocate_or_throw(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return test::allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return test::allocate(bytes);
}
void operator delete(void* p) noexcept {
  test::deallocate(p);
}
void operator delete[](void* p) noexcept {
  test::deallocate(p);
}
void operator delete(void* p, std::size_t) noexcept {
  test::deallocate(p);
}
void operator delete[](void* p, std::size_t) noexcept {
  test::deallocate(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
  test::deallocate(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
  test::deallocate(p);
}
