// Libraries that are loaded while a program runs.
#pragma once

#if defined(_WIN32)

#include <windows.h>

#include <cstdio>

inline constexpr const char* kUsualPack = "matrix.dll";

// Null when it cannot be loaded.
inline void* open_library(const char* path) {
  return reinterpret_cast<void*>(LoadLibraryA(path));
}
// The address of what the library shows under that name; null if nothing.
inline void* find_symbol(void* library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
// Why the library was not loaded.
inline const char* library_error() {
  static char words[40];
  std::snprintf(words, sizeof words, "not loaded: error %lu", GetLastError());
  return words;
}

#else

#include <dlfcn.h>

inline constexpr const char* kUsualPack = "libmatrix.so";

// Null when it cannot be loaded.
inline void* open_library(const char* path) {
  return dlopen(path, RTLD_NOW);
}
// The address of what the library shows under that name; null if nothing.
inline void* find_symbol(void* library, const char* name) {
  return dlsym(library, name);
}
// Why the library was not loaded.
inline const char* library_error() {
  return dlerror();
}

#endif
