#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>

#include "host/efiutils/system/platform.hpp"

namespace efi {

static_assert(kPipeRoom <= PIPE_BUF);

// --- Memory ---

constexpr std::uint64_t kAddressLimit = std::uint64_t{1} << 32;

void* map_low(std::size_t bytes) {
  constexpr int kProtection = PROT_READ | PROT_WRITE;
  constexpr int kFlags = MAP_PRIVATE | MAP_ANONYMOUS;
#if defined(MAP_32BIT)
  void* const low = mmap(nullptr, bytes, kProtection, kFlags | MAP_32BIT, -1, 0);
  if (low != MAP_FAILED) return low;
#endif
  // The kernel takes the address as a hint only: a mapping too high is undone.
  constexpr std::uint64_t kLowest = 0x10000000;
  for (std::uint64_t at = kLowest; at + bytes <= kAddressLimit; at += bytes) {
    void* const hint = reinterpret_cast<void*>(static_cast<std::uintptr_t>(at));
    void* const got = mmap(hint, bytes, kProtection, kFlags, -1, 0);
    if (got == MAP_FAILED) return nullptr;
    if (reinterpret_cast<std::uintptr_t>(got) + bytes <= kAddressLimit) return got;
    munmap(got, bytes);
  }
  return nullptr;
}

void unmap_low(void* memory, std::size_t bytes) {
  munmap(memory, bytes);
}

// --- The user's surroundings ---

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::vector<std::string> program_arguments(int argc, char** argv) {
  return {argv, argv + argc};
}

bool is_terminal(int descriptor) {
  return isatty(descriptor) != 0;
}

std::string program_path() {
  std::error_code failed;
  return std::filesystem::read_symlink("/proc/self/exe", failed).string();
}

std::string user_data() {
  const std::string data = environment("XDG_DATA_HOME");
  if (data.starts_with('/')) return data;
  const char* const home = std::getenv("HOME");
  return std::string(home != nullptr ? home : ".") + "/.local/share";
}

std::string library_of(const void* address) {
  Dl_info info;
  return dladdr(address, &info) == 0 || info.dli_fname == nullptr ? "" : info.dli_fname;
}

// --- Locks ---

Descriptor open_lock(const std::string& path) {
  constexpr int kFlags = O_CREAT | O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  return Descriptor(open(path.c_str(), kFlags, 0644));
}

bool take_lock(int descriptor) {
  return flock(descriptor, LOCK_EX) == 0;
}

// --- Waiting ---

int wait_for_room(int descriptor, int milliseconds) {
  pollfd ready = {descriptor, POLLOUT, 0};
  return poll(&ready, 1, milliseconds);
}

int wait_for_input(int descriptor, int milliseconds) {
  pollfd ready = {descriptor, POLLIN, 0};
  return poll(&ready, 1, milliseconds);
}

}  // namespace efi
