// Values and outcomes for people.
#pragma once

#include <string>
#include <vector>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/session/session.hpp"

namespace worksheet {

struct DisplayOptions {
  int digits = 6;            // Significant digits.
  bool colour = false;       // Terminal colours.
  bool show_source = false;  // Show the expression in front of its value.
  int most_rows = 24;        // Longer and wider matrices are elided...
  int width = 100;           // ... to lines of as many characters...
  bool all = false;          // ... unless all is wanted.
};

// The indices of `count` rows or columns for which there are `most` places: all, or the first and
// the last ones with a gap, -1, between them that stands for two at least.
std::vector<int> shown_indices(int count, int most);

std::string number_text(const Number& z, int digits);

// The text of an outcome, lines with their newlines; empty if there is nothing to show.
std::string outcome_text(const Machine& machine, const Outcome& outcome,
                         const DisplayOptions& options);

}  // namespace worksheet
