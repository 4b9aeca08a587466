#include "host/worksheet/functions/building.hpp"

#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/units/unit.hpp"
#include "host/worksheet/functions/elementwise.hpp"

namespace worksheet {

namespace {

// Argument k as a count; an error value in *error otherwise.
std::ptrdiff_t count_at(Machine& machine, const Call& call, std::size_t k, Value* error) {
  const Value v = as_number(call.arguments[k]);
  const bool whole = is_plain_real(v) && v.re >= 0.0 && std::floor(v.re) == v.re;
  if (!whole) {
    *error = machine.fail(call.places[k], "must be an integer that is not negative");
  } else if (v.re > static_cast<double>(kBuiltLimit.most)) {
    *error = machine.fail(call.places[k], kBuiltLimit.message);
  } else {
    return static_cast<std::ptrdiff_t>(v.re);
  }
  return 0;
}

bool is_too_large(std::ptrdiff_t rows, std::ptrdiff_t cols) {
  const auto most = static_cast<std::ptrdiff_t>(kBuiltLimit.most);
  return rows > most || (rows != 0 && cols > most / rows);
}

Value filled(Machine& machine, const Call& call, double x) {
  Value error = {};
  const std::ptrdiff_t rows = count_at(machine, call, 0, &error);
  if (is_error(error)) return error;
  const std::ptrdiff_t cols = count_at(machine, call, 1, &error);
  if (is_error(error)) return error;
  if (is_too_large(rows, cols)) return machine.fail(call.span, kBuiltLimit.message);
  MatrixBuilder result(rows, cols);
  if (x != 0.0) std::fill_n(result.re(), rows * cols, x);
  return object_value(result.finish(machine.store));
}

}  // namespace

Value zeros(Machine& machine, const Call& call) {
  return filled(machine, call, 0.0);
}

Value ones(Machine& machine, const Call& call) {
  return filled(machine, call, 1.0);
}

Value linspace(Machine& machine, const Call& call) {
  Value ends[2];
  for (std::size_t k = 0; k < 2; ++k) {
    ends[k] = as_number(call.arguments[k]);
    if (!is_number(ends[k])) return machine.fail(call.places[k], "must be a number");
  }
  Value error = {};
  const std::ptrdiff_t n = count_at(machine, call, 2, &error);
  if (is_error(error)) return error;
  const Unit* const unit = needs_no_unit(ends[0]) ? ends[1].unit : ends[0].unit;
  const auto factor = needs_no_unit(ends[1]) ? 1.0 : common_conversion(ends[1].unit, unit);
  if (!factor)
    return machine.fail(call.span, fmt::format("linspace needs values of one unit: {} and {}{}",
                                               unit_text(ends[0].unit), unit_text(ends[1].unit),
                                               conversion_hint(ends[1].unit, unit)));
  const Number a = number(ends[0]), b = number(ends[1]) * *factor;
  MatrixBuilder result(n, 1);
  for (std::ptrdiff_t k = 0; k + 1 < n; ++k)
    result.set(k, a + (b - a) * (static_cast<double>(k) / static_cast<double>(n - 1)));
  if (n > 0) result.set(n - 1, b);
  return object_value(result.finish(machine.store), unit);
}

// --- blocks ---

namespace {

// The places of blocks: where their rows and columns begin, and at last where they end.
struct Grid {
  std::vector<std::ptrdiff_t> rows = {0}, cols = {0};
};

Value block_at(const aMatrix* of, std::ptrdiff_t i, std::ptrdiff_t j) {
  const std::ptrdiff_t k = j * of->rows + i;
  const double re = re_at(of, k);
  return efi::is_nested_element(re) ? nested(re) : number_value(re, im_at(of, k));
}

void copy_block(MatrixBuilder& result, const Value& block, std::ptrdiff_t row, std::ptrdiff_t col) {
  const Elements x(block);
  for (std::ptrdiff_t j = 0; j < x.cols; ++j)
    for (std::ptrdiff_t i = 0; i < x.rows; ++i)
      result.set((col + j) * result.rows() + row + i, x.at(j * x.rows + i));
}

// Lays the blocks out by those of the first column and of the first row. Gives what is wrong with
// one that does not fit; empty if nothing is.
std::string lay_out(const aMatrix* of, Grid* grid) {
  for (std::ptrdiff_t j = 0; j < of->cols; ++j)
    for (std::ptrdiff_t i = 0; i < of->rows; ++i) {
      const Value block = block_at(of, i, j);
      if (const char* reason = objection(block, false))
        return fmt::format("block {} of row {} {}", j + 1, i + 1, reason);
      const Elements x(block);
      if (j == 0) grid->rows.push_back(grid->rows.back() + x.rows);
      if (i == 0) grid->cols.push_back(grid->cols.back() + x.cols);
      const auto at_i = grid->rows.begin() + i, at_j = grid->cols.begin() + j;
      const std::ptrdiff_t height = at_i[1] - at_i[0], width = at_j[1] - at_j[0];
      if (x.rows != height || x.cols != width)
        return fmt::format("block {} of row {} is {} x {}; {} x {} fits there", j + 1, i + 1,
                           x.rows, x.cols, height, width);
    }
  return {};
}

}  // namespace

Value blocks(Machine& machine, const Call& call) {
  const Value& v = call.arguments[0];
  if (!is_matrix(v)) return machine.fail(call.places[0], "must be a nested array of matrices");
  const aMatrix* const of = matrix(v);
  if (!contains_ptrs(matrix(v))) return v;
  Grid grid;
  const std::string wrong = lay_out(of, &grid);
  if (!wrong.empty()) return machine.fail(call.places[0], wrong);
  if (is_too_large(grid.rows.back(), grid.cols.back()))
    return machine.fail(call.span, kBuiltLimit.message);
  MatrixBuilder result(grid.rows.back(), grid.cols.back());
  for (std::ptrdiff_t j = 0; j < of->cols; ++j)
    for (std::ptrdiff_t i = 0; i < of->rows; ++i)
      copy_block(result, block_at(of, i, j), grid.rows.begin()[i], grid.cols.begin()[j]);
  return object_value(result.finish(machine.store));
}

}  // namespace worksheet
