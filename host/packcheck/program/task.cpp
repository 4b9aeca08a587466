#include "host/packcheck/program/task.hpp"

#include <nlohmann/json.hpp>

#include "host/packcheck/checks/checks.hpp"
#include "host/packcheck/checks/survey.hpp"
#include "host/packcheck/process/function_json.hpp"

// What arguments to begin with consist of: small shapes and numbers.
namespace arguments {
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Recipe, form, rows, cols, re, behaviour)
}

namespace packcheck {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Options, pack, pack_name, seed, depth, strict, time_limit,
                                   check_limit, only_call)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Target, function, base, is_taken)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Task, work, options, at_hand, targets, skipped, first_call)

namespace {

void do_work(const std::string& work, Session& session) {
  if (work == kListFunctions) return list_functions(session);
  if (work == kFindBase) return find_base(session);
  for (const Check& check : all_checks())
    if (work == check.name) check.run(session);
}

}  // namespace

std::string bytes_of(const Task& task) {
  const std::vector<std::uint8_t> bytes = nlohmann::json::to_cbor(task);
  return {bytes.begin(), bytes.end()};
}

void perform(const std::string& bytes, Channel& channel) {
  const auto task = nlohmann::json::from_cbor(bytes).get<Task>();
  const Target* const target = task.at_hand.empty() ? nullptr : &task.at_hand.front();
  Session session(task.options, channel, task.targets, target, task.skipped, task.first_call);
  do_work(task.work, session);
  channel.send({.kind = Message::calls, .number = session.calls_made});
}

}  // namespace packcheck
