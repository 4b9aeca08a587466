#include "host/worksheet/language/indices.hpp"

#include "fmt/format.h"

namespace worksheet {

Subscript IndexList::subscript(Machine& machine, const Index& index, const Extent& extent,
                               Value* error) const {
  if (index.node == nullptr) return {extent.size};
  const double outer = machine.set_last_index(extent.last());
  Subscript result;
  if (index.range != nullptr) {
    const Range range = index.range->range_of(machine, error);
    if (!is_error(*error)) result = subscript_of(machine, range, extent, index.node->span, error);
  } else {
    result = subscript_of(machine, index.node->evaluate(machine), extent, index.node->span, error);
  }
  machine.set_last_index(outer);
  return result;
}

Block IndexList::block_of(Machine& machine, const aMatrix* m, Value* error) const {
  if (!is_plain_real(origin->value)) {
    *error = machine.fail(span, "ORIGIN must be a real number");
    return {};
  }
  const double first = origin->value.re;
  const Subscript single = {1, 0, 1, {}, true};
  if (is_everything()) return {{m->rows}, {m->cols}, true};
  if (indices.size() == 1 && m->rows != 1 && m->cols != 1) {
    *error = machine.fail(span, fmt::format("a {} matrix needs two indices", shape_text(m)));
    return {};
  }
  if (indices.size() == 1) {
    Subscript one = subscript(machine, indices[0], {element_count(m), first}, error);
    return m->cols == 1 ? Block{std::move(one), single} : Block{single, std::move(one)};
  }
  Block block;
  block.rows = subscript(machine, indices[0], {m->rows, first}, error);
  if (!is_error(*error)) block.cols = subscript(machine, indices[1], {m->cols, first}, error);
  return block;
}

Value IndexSuffix::apply(Machine& machine, const Value& a, Span place) const {
  if (!is_matrix(a)) return machine.fail(place, fmt::format("{} has no elements", kind_name(a)));
  Value error = {};
  const Block block = list.block_of(machine, matrix(a), &error);
  if (is_error(error)) return error;
  return with_unit(
      list.is_everything() ? all_elements(machine, matrix(a)) : part_of(machine, matrix(a), block),
      a.unit);
}

}  // namespace worksheet
