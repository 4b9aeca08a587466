#include "tests/calls/corpus.hpp"

namespace calls {

namespace {

const int kSizes[] = {1, 2, 3, 5, 8, 9, 17, 33};
const int kLargeSizes[] = {64, 100};
const struct {
  int rows, cols;
} kRectangles[] = {{5, 1}, {1, 5}, {3, 2}, {2, 3}, {9, 5}, {8, 17}, {33, 17}, {100, 9}};

}  // namespace

std::vector<Sample> make_samples(efi::Store& store) {
  std::vector<Sample> samples;
  const auto add = [&](const arguments::Kind& kind, int rows, int cols) {
    const std::string size = std::to_string(rows) + "x" + std::to_string(cols);
    samples.push_back({std::string(kind.name) + " " + size,
                       arguments::make_matrix(store, kind.name, rows, cols)});
  };
  for (const arguments::Kind& kind : std::span(arguments::kinds()).first(arguments::kVariedKinds)) {
    for (const int n : kSizes) add(kind, n, n);
    if (kind.large)
      for (const int n : kLargeSizes) add(kind, n, n);
    if (!kind.square)
      for (const auto& [rows, cols] : kRectangles) add(kind, rows, cols);
  }
  return samples;
}

}  // namespace calls
