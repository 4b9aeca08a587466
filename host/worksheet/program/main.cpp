// The worksheet application.
#include <stdexcept>

#include "host/worksheet/program/options.hpp"
#include "host/worksheet/program/pack_choice.hpp"
#include "host/worksheet/program/run.hpp"
#include "host/worksheet/program/terminal.hpp"

int main(int argc, char** argv) {
  using namespace worksheet;
  Options options;
  if (const auto status = read_options(argc, argv, options)) return *status;
  try {
    const bool catalogue =
        options.list_packs || !options.register_path.empty() || !options.unregister_path.empty();
    if (!catalogue) return run(options);
    manage_catalogue(options);
    return kAllWell;
  } catch (const std::runtime_error& error) {
    complain(error.what());
  }
  return kWrongUsage;
}
