#include <csignal>

#include "host/worksheet/session/signals_held.hpp"

namespace worksheet {

struct SignalsHeld::Mask {
  sigset_t signals = {};
};

SignalsHeld::SignalsHeld() : before_(std::make_unique<Mask>()) {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before_->signals);
}

SignalsHeld::~SignalsHeld() {
  pthread_sigmask(SIG_SETMASK, &before_->signals, nullptr);
}

}  // namespace worksheet
