// No signals for threads that begin: signals_held_posix.cpp, signals_held_windows.cpp.
#pragma once

#include <memory>

namespace worksheet {

// While it lives, threads that begin see no signal: the main one has to see them all.
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld();

 private:
  struct Mask;
  std::unique_ptr<Mask> before_;
};

}  // namespace worksheet
