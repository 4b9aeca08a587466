// Who holds a matrix. Values are never shared as seen by the user: whoever writes into a matrix
// that others hold, too, writes into a copy.
#pragma once

#include <unordered_map>

#include "host/worksheet/values/variable.hpp"

namespace worksheet {

class Holders {
 public:
  // One variable or loop more holds the matrix, and one less. Adding throws std::bad_alloc.
  void add(const Anyval* matrix);
  void remove(const Anyval* matrix);

  // The matrix, held by a variable, is part of another value: it is never written to.
  void lend(const Anyval* matrix) { held_.at(matrix).is_lent = true; }

  // Lets the variable write to its matrix if no one else holds it; it is told (Variable::written)
  // when someone else does. False if someone does.
  bool let_write(Variable& variable);

 private:
  struct Holding {
    int count = 0;
    bool is_lent = false;
    Variable* writer = nullptr;
  };
  std::unordered_map<const Anyval*, Holding> held_;
};

}  // namespace worksheet
