// Telling the findings, and the checks: to people as text, to machines as one JSON object a line.
#pragma once

#include <string>
#include <vector>

#include "host/packcheck/checks/session.hpp"
#include "host/packcheck/finding.hpp"

namespace packcheck {

struct Summary {
  std::size_t functions;
  std::vector<std::string> refusing;  // The functions that took none of the arguments tried.
  std::size_t checks;
  int calls;
  double seconds;
};

void print_text(const Options& options, const std::vector<Finding>& findings,
                const Summary& summary);
void print_json(const Options& options, const std::vector<Finding>& findings,
                const Summary& summary);

// The checks that there are.
void list_text();
void list_json();

}  // namespace packcheck
