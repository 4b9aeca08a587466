// The interactive prompt: line editing, history, completion of names.
#pragma once

#include "host/worksheet/session/session.hpp"

namespace worksheet {

// Reads statements until the end of input. Ctrl-C at the prompt gives up what is typed; while a
// statement is evaluated it ends the evaluation.
void run_prompt(Session& session);

}  // namespace worksheet
