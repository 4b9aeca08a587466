// Libraries call the functions of the compiler's runtime library, whatever the program has. So
// those are overwritten with jumps to the program's.
#include <windows.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>

#include "host/packcheck/memory/operator_new.hpp"

namespace packcheck {

namespace {

#ifdef _WIN64
constexpr const char* kNames[] = {
    "_Znwy",   "_Znay",   "_ZnwyRKSt9nothrow_t",  "_ZnayRKSt9nothrow_t", "_ZdlPv", "_ZdaPv",
    "_ZdlPvy", "_ZdaPvy", "_ZdlPvRKSt9nothrow_t", "_ZdaPvRKSt9nothrow_t"};
#else
constexpr const char* kNames[] = {
    "_Znwj",   "_Znaj",   "_ZnwjRKSt9nothrow_t",  "_ZnajRKSt9nothrow_t", "_ZdlPv", "_ZdaPv",
    "_ZdlPvj", "_ZdaPvj", "_ZdlPvRKSt9nothrow_t", "_ZdaPvRKSt9nothrow_t"};
#endif

using Nothrow = const std::nothrow_t&;

// In the order of the names.
const void* const kOwn[] = {
    reinterpret_cast<void*>(static_cast<void* (*)(std::size_t)>(operator new)),
    reinterpret_cast<void*>(static_cast<void* (*)(std::size_t)>(operator new[])),
    reinterpret_cast<void*>(static_cast<void* (*)(std::size_t, Nothrow)>(operator new)),
    reinterpret_cast<void*>(static_cast<void* (*)(std::size_t, Nothrow)>(operator new[])),
    reinterpret_cast<void*>(static_cast<void (*)(void*)>(operator delete)),
    reinterpret_cast<void*>(static_cast<void (*)(void*)>(operator delete[])),
    reinterpret_cast<void*>(static_cast<void (*)(void*, std::size_t)>(operator delete)),
    reinterpret_cast<void*>(static_cast<void (*)(void*, std::size_t)>(operator delete[])),
    reinterpret_cast<void*>(static_cast<void (*)(void*, Nothrow)>(operator delete)),
    reinterpret_cast<void*>(static_cast<void (*)(void*, Nothrow)>(operator delete[]))};

// Functions begin at multiples of 16 bytes: there is room for it, however short one is.
void overwrite_with_jump(void* function, const void* target) {
#ifdef _WIN64
  std::uint8_t jump[14] = {0xFF, 0x25};  // jmp *(%rip), and the address behind it.
  std::memcpy(jump + 6, &target, sizeof target);
#else
  std::uint8_t jump[5] = {0xE9};  // jmp, over this distance.
  const auto distance = reinterpret_cast<std::uintptr_t>(target) -
                        reinterpret_cast<std::uintptr_t>(function) - sizeof jump;
  std::memcpy(jump + 1, &distance, sizeof distance);
#endif
  DWORD before = 0;
  if (VirtualProtect(function, sizeof jump, PAGE_EXECUTE_READWRITE, &before) == 0)
    throw std::runtime_error("the runtime library cannot be changed");
  std::memcpy(function, jump, sizeof jump);
  VirtualProtect(function, sizeof jump, before, &before);
  FlushInstructionCache(GetCurrentProcess(), function, sizeof jump);
}

}  // namespace

void share_operator_new() {
  const HMODULE runtime = GetModuleHandleW(L"libstdc++-6.dll");
  for (std::size_t k = 0; k < std::size(kNames); ++k) {
    auto* const function = reinterpret_cast<void*>(GetProcAddress(runtime, kNames[k]));
    if (function == nullptr) throw std::runtime_error("the runtime library has no operator new");
    overwrite_with_jump(function, kOwn[k]);
  }
}

}  // namespace packcheck
