#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <new>
#include <stdexcept>

#include "host/efiutils/system/wide_text_windows.hpp"
#include "host/packcheck/process/channel.hpp"
#include "host/packcheck/watch/environment.hpp"

namespace packcheck {

namespace {

[[noreturn]] void fail(const char* what) {
  throw std::runtime_error(std::string(what) + ": " + efi::last_error_words());
}

void* mapped(HANDLE mapping) {
  void* const page = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Progress));
  if (page == nullptr) fail("the shared page");
  return page;
}

efi::Descriptor descriptor_of(HANDLE handle) {
  return efi::Descriptor(_open_osfhandle(reinterpret_cast<std::intptr_t>(handle), O_BINARY));
}

HANDLE handle_of(const efi::Descriptor& descriptor) {
  return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor.get()));
}

}  // namespace

Channel::Channel() {
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  page_handle_ = CreateFileMappingW(INVALID_HANDLE_VALUE, &inherited, PAGE_READWRITE, 0,
                                    sizeof(Progress), nullptr);
  if (page_handle_ == nullptr) fail("the shared page");
  progress = new (mapped(page_handle_)) Progress{};
  progress->call = -1;
  HANDLE reading = nullptr, writing = nullptr;
  if (CreatePipe(&reading, &writing, &inherited, 1 << 16) == 0) fail("a pipe");
  SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);
  reading_ = descriptor_of(reading);
  writing_ = descriptor_of(writing);
}

Channel::Channel(void* page_handle, void* pipe_handle)
    : progress(static_cast<Progress*>(mapped(page_handle))),
      page_handle_(page_handle),
      writing_(descriptor_of(pipe_handle)) {}

Channel::~Channel() {
  UnmapViewOfFile(progress);
  CloseHandle(page_handle_);
}

void Channel::become_writer() {
  reading_.close();
  const int before = writing_.get();
  int moved = before;
  // The C library gives the lowest one that is free.
  while (moved >= 0 && moved < kFirstOwnDescriptor) moved = _dup(before);
  for (int k = 3; k < kFirstOwnDescriptor; ++k)
    if (k != before) _close(k);
  if (moved < 0) fail("a descriptor");
  writing_ = efi::Descriptor(moved);
}

void Channel::become_reader() {
  writing_.close();
}

void Channel::wait(int milliseconds) const {
  DWORD ready = 0;
  constexpr int kPause = 1;
  for (int waited = 0; waited < milliseconds && ready == 0; waited += kPause) {
    if (PeekNamedPipe(handle_of(reading_), nullptr, 0, nullptr, &ready, nullptr) == 0) return;
    if (ready == 0) Sleep(kPause);
  }
}

bool Channel::read_some(std::string& text) const {
  DWORD ready = 0, got = 0;
  char bytes[1 << 14];
  if (PeekNamedPipe(handle_of(reading_), nullptr, 0, nullptr, &ready, nullptr) == 0 || ready == 0 ||
      ReadFile(handle_of(reading_), bytes, std::min<DWORD>(ready, sizeof bytes), &got, nullptr) ==
          0)
    return false;
  text.append(bytes, got);
  return got != 0;
}

}  // namespace packcheck
