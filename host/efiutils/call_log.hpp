// A log of what packs ask of their host, for tests.
#pragma once

#include <vector>

namespace efi {

#pragma GCC visibility push(default)

// Where the names of the services called go, oldest first; null: nowhere.
extern std::vector<const char*>* call_log;

#pragma GCC visibility pop

inline void note_call(const char* service) {
  if (call_log != nullptr) call_log->push_back(service);
}

}  // namespace efi
