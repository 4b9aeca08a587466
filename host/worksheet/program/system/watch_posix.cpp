#include <sys/stat.h>

#include "host/worksheet/program/system/watch.hpp"

namespace worksheet {

FileWatch::State FileWatch::look(const std::string& path) {
  struct stat found = {};
  if (stat(path.c_str(), &found) != 0) return {};
  return {true,
          static_cast<unsigned long long>(found.st_dev),
          static_cast<unsigned long long>(found.st_ino),
          static_cast<unsigned long long>(found.st_size),
          found.st_mtim.tv_sec,
          found.st_mtim.tv_nsec};
}

}  // namespace worksheet
