#include "host/packcheck/checks/survey.hpp"

namespace packcheck {

void list_functions(Session& session) {
  session.step("loading the pack");
  Message message{Message::callable};
  for (const Function& function : callable_functions(session.pack())) {
    message.function = function;
    session.channel().send(message);
  }
}

void find_base(Session& session) {
  const auto attempts = first_attempts(session.function());
  session.pack();
  for (std::size_t k = static_cast<std::size_t>(session.first_call()); k < attempts.size(); ++k) {
    const Call call = {Family::base, with_context(session.function(), attempts[k])};
    session.channel().begin(static_cast<int>(k), describe(session.function(), call));
    Trial trial(session, call);
    const Anyval* const result = trial.invoke();
    // A value that is not the host's is not looked into: checks will say so.
    if (!trial.is_new(result) || result->kind == kErrorKind) continue;
    session.channel().send({.kind = Message::taken, .number = static_cast<int>(k)});
    return;
  }
}

}  // namespace packcheck
