// The interpreter behind a notebook: cells in, results out.
#pragma once

#include <span>
#include <string>
#include <xeus/xinterpreter.hpp>

#include "host/worksheet/session/session.hpp"

namespace worksheet_kernel {

class Interpreter : public xeus::xinterpreter {
 public:
  // Loads the packs as the program does. Throws PackError.
  explicit Interpreter(std::span<const std::string> packs);

 private:
  void configure_impl() override {}
  nlohmann::json execute_request_impl(int counter, const std::string& code, bool silent,
                                      bool store_history, nlohmann::json user_expressions,
                                      bool allow_stdin) override;
  nlohmann::json complete_request_impl(const std::string& code, int cursor) override;
  nlohmann::json inspect_request_impl(const std::string& code, int cursor, int detail) override;
  nlohmann::json is_complete_request_impl(const std::string& code) override;
  nlohmann::json kernel_info_request_impl() override;
  void shutdown_request_impl() override {}

  void show(const worksheet::Outcome& outcome);
  void show_error(const worksheet::Outcome& outcome);

  worksheet::Session session_;
  // Of the cell under evaluation:
  int counter_ = 0;
  bool silent_ = false;
  const worksheet::Source* last_ = nullptr;  // Its last statement, whose value is the cell's.
  nlohmann::json error_;  // The reply that says what failed; null if nothing did.
  int pictures_ = 0;      // Of all cells.
};

}  // namespace worksheet_kernel
