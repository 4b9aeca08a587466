// Values and outcomes as JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/session/session.hpp"

namespace worksheet {

using Json = nlohmann::ordered_json;

Json value_json(const Machine& machine, const Value& value);

// The object of one statement.
Json outcome_json(const Machine& machine, const Outcome& outcome);

// One line of text, without the newline; text that is no UTF-8 is mended.
std::string json_line(const Json& json);

}  // namespace worksheet
