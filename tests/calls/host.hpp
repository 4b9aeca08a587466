// A host for calls: no more than a context.
#pragma once

#include <deque>
#include <functional>

#include "host/efiutils/evaluator.hpp"
#include "host/efiutils/store.hpp"

namespace calls {

struct Host {
  Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // A function value; `body` is called with the two indices that the function `matrix` passes.
  using Body = std::function<Anyval*(double i, double j)>;
  Anyval* function(Body body);

  efi::Store store;
  efi::Evaluator evaluator;
  EfiCallContext context;

 private:
  std::deque<Body> bodies_;
};

}  // namespace calls
