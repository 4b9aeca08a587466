// The notebook kernel for worksheets: worksheet-kernel -f CONNECTION [PATH OF A PACK]...
#include <openssl/crypto.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>
#include <xeus/xeus_context.hpp>
#include <xeus/xhelper.hpp>
#include <xeus/xkernel.hpp>
#include <xeus/xkernel_configuration.hpp>
#include <xeus/xserver_zmq.hpp>
#include <zmq.hpp>

#include "host/kernel/interpreter.hpp"
#include "host/kernel/kernel_signals.hpp"

namespace {

int run(const std::vector<std::string>& arguments) {
  if (arguments.size() < 2 || arguments[0] != "-f") {
    std::fputs("usage: worksheet-kernel -f CONNECTION_FILE [PACK]...\n", stderr);
    return 2;
  }
  // What signs messages would keep half a megabyte of texts about its errors, which nobody reads.
  OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CRYPTO_STRINGS, nullptr);
  worksheet_kernel::hold_signals();
  worksheet_kernel::end_with_parent();
  auto interpreter =
      std::make_unique<worksheet_kernel::Interpreter>(std::span(arguments).subspan(2));
  // Text that is not UTF-8 is mended, not refused.
  xeus::xkernel kernel(xeus::load_configuration(arguments[1]), xeus::get_user_name(),
                       xeus::make_context<zmq::context_t>(), std::move(interpreter),
                       xeus::make_xserver_zmq, xeus::make_in_memory_history_manager(), nullptr,
                       xeus::make_null_debugger, nlohmann::json::object(),
                       nlohmann::json::error_handler_t::replace);
  kernel.start();
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  return run({argv + 1, argv + argc});
} catch (const std::exception& error) {
  std::fprintf(stderr, "worksheet-kernel: %s\n", error.what());
  return 2;
}
