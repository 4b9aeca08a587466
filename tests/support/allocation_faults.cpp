#include "tests/support/allocation_faults.hpp"

#include <cstdlib>
#include <new>

namespace test {

namespace {

bool active = false;
int asked_for = 0;
int nth_to_fail = 0;
Failing how = Failing::once;
bool failed = false;

void* allocate(std::size_t bytes) {
  return allocation_fails() ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
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
  std::free(p);
}
void operator delete[](void* p) noexcept {
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
  std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
  std::free(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
  std::free(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
  std::free(p);
}
