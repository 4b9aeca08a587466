// What the process of a check says to the one that watches it: each message is a line of text.
#pragma once

#include <optional>
#include <string>

#include "host/packcheck/finding.hpp"
#include "host/packcheck/pack.hpp"

namespace packcheck {

struct Message {
  enum Kind {
    found,     // `finding`
    callable,  // `function` is one of the pack's.
    taken,     // The function takes the attempt of this `number`.
    calls,     // The `number` of calls made.
    failed     // The work was not done; `text` says why.
  } kind;
  Finding finding = {};
  Function function = {};
  int number = 0;
  std::string text = {};
};

std::string line_of(const Message& message);
// Nothing for a line that is not whole, as one that a dying process wrote.
std::optional<Message> message_of(const std::string& line);

// In quotes, and on one line.
std::string quoted(const std::string& text);

}  // namespace packcheck
