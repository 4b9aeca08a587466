#include "host/worksheet/values/holders.hpp"

namespace worksheet {

void Holders::add(const Anyval* matrix) {
  Holding& holding = held_[matrix];
  ++holding.count;
  if (holding.writer == nullptr) return;
  holding.writer->written = nullptr;
  holding.writer = nullptr;
}

void Holders::remove(const Anyval* matrix) {
  const auto found = held_.find(matrix);
  if (--found->second.count == 0)
    held_.erase(found);
  else
    found->second.writer = nullptr;
}

bool Holders::let_write(Variable& variable) {
  Holding& holding = held_.at(variable.value.object);
  if (holding.count > 1 || holding.is_lent) return false;
  holding.writer = &variable;
  variable.written = variable.value.object;
  return true;
}

}  // namespace worksheet
