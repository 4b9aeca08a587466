#include "tests/calls/host.hpp"

namespace calls {

Host::Host() : context{&store, &evaluator} {
  evaluator.apply_function = [](Anyval* function, const sCons* arguments) {
    const auto number = [](const sCons* cell) {
      return static_cast<const aComplex*>(cell->car)->re;
    };
    const auto& body = *static_cast<Body*>(static_cast<efi::aFunction*>(function)->body);
    return body(number(arguments), number(arguments->cdr));
  };
}

Anyval* Host::function(Body body) {
  return store.new_function(&bodies_.emplace_back(std::move(body)));
}

}  // namespace calls
