// Ctrl-C.
#pragma once

namespace worksheet {

class Machine;

// From now on SIGINT ends the evaluation that is under way. Calls into the system are not resumed:
// who waits for a key notices.
void let_interrupt(Machine& machine);

}  // namespace worksheet
