// Calls of packs' functions, from the request of the extension to the answer.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
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
  // A row of a pack, or the inverse that hosts have for their operator.
  struct Function {
    std::size_t argument_count;
    std::vector<std::string> context;  // The variables whose values follow the arguments.
    std::function<Anyval*(std::span<Anyval* const>)> call;
  };
  // Calls it, with cells as numbers where it wants them so.
  Message call(const Function& function, const std::string& name, std::vector<Anyval*> values,
               std::size_t part);

  std::vector<std::unique_ptr<worksheet::Pack>> packs_;
  std::map<std::pair<std::string, std::string>, Function> functions_;  // By path and name.
  efi::Store store_;
  efi::Evaluator evaluator_;
  EfiCallContext context_ = {&store_, &evaluator_};
};

}  // namespace calc
