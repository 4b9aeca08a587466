#include <dlfcn.h>

#include "host/packs/library.hpp"

namespace worksheet {

namespace {

// The loader looks a bare name up in its own directories; a path is meant here.
std::string loader_path(const std::string& path) {
  return path.find('/') == std::string::npos ? "./" + path : path;
}

}  // namespace

const char* const kLibraryEnding = ".so";

void* open_library(const std::string& path, std::string* reason) {
  void* const library = dlopen(loader_path(path).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) *reason = dlerror();
  return library;
}

void close_library(void* library) {
  dlclose(library);
}

void* find_symbol(void* library, const char* name) {
  return dlsym(library, name);
}

}  // namespace worksheet
