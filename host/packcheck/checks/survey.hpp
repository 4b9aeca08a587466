// Finding out what a pack has: its functions, and arguments that each of them takes.
#pragma once

#include "host/packcheck/checks/session.hpp"

namespace packcheck {

// Sends a message `callable` for each function that can be called.
void list_functions(Session& session);

// Sends a message `taken` for the first attempt for which the function gives a value, if any.
void find_base(Session& session);

}  // namespace packcheck
