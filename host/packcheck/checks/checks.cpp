#include "host/packcheck/checks/checks.hpp"

namespace packcheck {

namespace {

constexpr Check kChecks[] = {
    {"exports", "shows the symbols that a host looks for, the table with room for every row",
     Scope::pack, check_exports},
    {"rows",
     "has a table of a sensible length, no unknown flag bits, reserved words and padding of 0",
     Scope::pack, check_rows},
    {"names", "names its functions by string records of the right length, each name once",
     Scope::pack, check_names},
    {"signatures", "uses signatures of the host's, with room for the context values", Scope::pack,
     check_signatures},
    {"contexts", "asks for worksheet variables by well-formed lists of identifiers", Scope::pack,
     check_contexts},
    {"handlers", "has a handler of its own code in every row", Scope::pack, check_handlers},
    {"unit-rules", "states unit rules that the host's rule language can read", Scope::pack,
     check_unit_rules},
    {"registration", "enters itself into the host's catalogue and leaves it again", Scope::pack,
     check_registration},
    {"survives", "returns from every call, in time, without an exception", Scope::function,
     check_survives},
    {"result", "gives a well-formed value or error value, made in that call or passed to it",
     Scope::function, check_result},
    {"repeatable", "gives the same bits again for the same arguments", Scope::function,
     check_repeatable},
    {"arguments", "leaves its arguments as they were, bit for bit", Scope::function,
     check_arguments},
    {"memory", "reads and writes only inside of live blocks, and frees each once", Scope::function,
     check_memory},
    {"leaks", "keeps no memory when a call is over", Scope::function, check_leaks},
    {"out-of-memory",
     "gives a value or an error value whichever allocation fails, and keeps nothing",
     Scope::function, check_out_of_memory},
    {"evaluator", "closes every evaluator frame that it opens, and no other", Scope::function,
     check_evaluator},
    {"floating-point", "leaves the control words and status flags as it found them",
     Scope::function, check_floating_point},
    {"environment", "leaves errno, locale, signals, directory, descriptors and threads alone",
     Scope::function, check_environment},
    {"output", "writes nothing on standard output or standard error", Scope::function,
     check_output},
    {"load", "leaves the process as it was when it is loaded, used and unloaded, many times",
     Scope::pack, check_load},
};

}  // namespace

std::span<const Check> all_checks() {
  return kChecks;
}

}  // namespace packcheck
