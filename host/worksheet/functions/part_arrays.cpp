#include "host/worksheet/functions/part_arrays.hpp"

#include <algorithm>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"

namespace worksheet {

namespace {

bool all_zero(const double* part, std::ptrdiff_t count) {
  return std::all_of(part, part + count, [](double x) { return x == 0.0; });
}

void free_part(double** part) {
  ::operator delete(*part);
  *part = nullptr;
}

// A copy of a matrix argument, its part arrays changed by `change`; numbers and others are refused.
template <class Change>
Value changed_copy(Machine& machine, const Call& call, Change change) {
  if (!is_matrix(call.arguments[0])) return machine.fail(call.places[0], "must be array");
  aMatrix* const copy = copy_of(machine, matrix(call.arguments[0]));
  change(copy);
  return object_value(copy);
}

}  // namespace

Value real_only(Machine& machine, const Call& call) {
  return changed_copy(machine, call, [](aMatrix* m) { free_part(&m->im); });
}

Value with_imag(Machine& machine, const Call& call) {
  const Value& v = call.arguments[0];
  if (!is_matrix(v)) return machine.fail(call.places[0], "must be array");
  aMatrix* copy = nullptr;
  if (matrix_copy_add_imag(&machine.context, matrix(v), &copy) != nullptr)
    return machine.out_of_memory(call.places[0]);
  return object_value(copy);
}

Value lean(Machine& machine, const Call& call) {
  return changed_copy(machine, call, [](aMatrix* m) {
    for (double** part : {&m->re, &m->im})
      if (*part != nullptr && all_zero(*part, element_count(m))) free_part(part);
  });
}

}  // namespace worksheet
