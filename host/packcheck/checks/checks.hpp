// The checks. Each is a plain function, run in a process of its own: for the pack as a whole, or
// for each of its functions.
#pragma once

#include <span>

#include "host/packcheck/checks/session.hpp"

namespace packcheck {

enum class Scope { pack, function };

struct Check {
  const char* name;
  const char* promise;  // What the pack does when the check finds nothing.
  Scope scope;
  void (*run)(Session& session);
};

// In the order in which they run.
std::span<const Check> all_checks();

// --- table_checks.cpp ---
void check_exports(Session& session);
void check_rows(Session& session);
void check_names(Session& session);
void check_signatures(Session& session);
void check_contexts(Session& session);
void check_handlers(Session& session);
void check_unit_rules(Session& session);

// --- life_checks.cpp ---
void check_registration(Session& session);
void check_load(Session& session);

// --- result_checks.cpp ---
void check_survives(Session& session);
void check_result(Session& session);
void check_repeatable(Session& session);

// --- memory_checks.cpp ---
void check_arguments(Session& session);
void check_memory(Session& session);
void check_leaks(Session& session);
void check_out_of_memory(Session& session);

// --- state_checks.cpp ---
void check_evaluator(Session& session);
void check_floating_point(Session& session);
void check_environment(Session& session);
void check_output(Session& session);

// What is wrong with the way in which a call ended, and with the value that it gave: a rule and a
// message for each complaint.
struct Complaint {
  const char* rule;
  std::string message;
};
std::vector<Complaint> complaints_about(Session& session, const Trial& trial, const Anyval* result);

// Whether null is accepted of the call in hand: see docs/packcheck.md.
bool may_be_null(const Session& session, const Trial& trial);

}  // namespace packcheck
