// What the audit of results costs: the same statement with it and without, through the session.
#pragma once

#include <nlohmann/json.hpp>
#include <regex>
#include <vector>

namespace bench {

// Times the statements whose name, "audit lu(A)" for instance, the filter finds, and prints a table
// of what their checks take, unless `json` is to have the rows. Times are the processor's, in
// seconds. Empty `sizes` are 3 to 300.
void time_audit(const std::regex& filter, std::vector<int> sizes, bool quick, nlohmann::json* json);

}  // namespace bench
