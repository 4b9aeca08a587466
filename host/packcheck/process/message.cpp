#include "host/packcheck/process/message.hpp"

#include "host/packcheck/process/function_json.hpp"

namespace packcheck {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Finding, check, function, rule, message, arguments, call, times)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Message, kind, finding, function, number, text)

namespace {

// A text of a pack's may be no UTF-8.
std::string dump(const nlohmann::json& json) {
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

std::string line_of(const Message& message) {
  return dump(message) + "\n";
}

std::optional<Message> message_of(const std::string& line) {
  const auto json = nlohmann::json::parse(line, nullptr, false);
  if (!json.is_object()) return std::nullopt;
  return json.get<Message>();
}

std::string quoted(const std::string& text) {
  return dump(text);
}

}  // namespace packcheck
