// Calls of packs' functions, from the request of the extension to the answer.
#pragma once

#include <memory>
#include <vector>

#include "calc/message.hpp"
#include "host/efiutils/evaluator.hpp"
#include "host/efiutils/store.hpp"
#include "host/packs/packs.hpp"

namespace calc {

class PackCalls {
 public:
  PackCalls();

  // Loads a pack and gives the message about it. Throws worksheet::PackError.
  Message load(const std::string& path);

  // The answer to a request. Throws std::exception for one that breaks the rules of the protocol.
  Message answer(const Message& request);

 private:
  // A row of a pack, or the inverse that hosts have for their operator: then there is no row.
  struct Function {
    const worksheet::Pack* pack = nullptr;  // Null where there is no such function.
    const worksheet::Row* row = nullptr;
  };
  Function find(const std::string& path, const std::string& name) const;
  // Calls it, with cells as numbers where it wants them so.
  Message call(const Function& function, const std::string& name, std::vector<Anyval*> values,
               std::size_t part);

  std::vector<std::unique_ptr<worksheet::Pack>> packs_;
  efi::Store store_;
  efi::Evaluator evaluator_;
  EfiCallContext context_ = {&store_, &evaluator_};
};

}  // namespace calc
