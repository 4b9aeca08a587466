// The worksheet application.
#include <exception>
#include <new>

#include "host/worksheet/program/catalogue_options.hpp"
#include "host/worksheet/program/options.hpp"
#include "host/worksheet/program/run.hpp"
#include "host/worksheet/program/system/process.hpp"
#include "host/worksheet/program/system/standard_output.hpp"
#include "host/worksheet/program/system/terminal.hpp"

namespace {

using namespace worksheet;

Status run_program(int argc, char** argv, StandardOutput& output) {
  Options options;
  if (const auto status = read_options(argc, argv, options)) return *status;
  const bool catalogue =
      options.list_packs || !options.register_path.empty() || !options.unregister_path.empty();
  if (!catalogue) return run(options, output);
  manage_catalogue(options);
  return kAllWell;
}

}  // namespace

int main(int argc, char** argv) {
  guard_standard_streams();
  StandardOutput output;
  try {
    const Status status = run_program(argc, argv, output);
    output.flush();
    return status;
  } catch (const std::bad_alloc&) {
    complain("memory exhausted");
  } catch (const std::exception& error) {
    complain(error.what());
  }
  return kWrongUsage;
}
