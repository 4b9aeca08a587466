#include "host/worksheet/program/kept_variables.hpp"

#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>

#include "fmt/format.h"
#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/program/system/terminal.hpp"
#include "host/worksheet/state/state.hpp"

namespace worksheet {

void check_state_file(const Options& options) {
  if (options.save.empty()) return;
  std::error_code ignored;
  if (std::filesystem::equivalent(efi::path_of(options.save), efi::path_of(options.file), ignored))
    throw std::runtime_error(options.save + ": the variables would replace the worksheet");
  if (const int error = efi::NewFile(options.save).error())
    throw std::runtime_error(
        fmt::format("{}: cannot be written: {}", options.save, efi::file_error_words(error)));
}

void load_variables(Machine& machine, const std::string& path) {
  int error = 0;
  std::error_code ignored;
  const auto size = std::filesystem::file_size(efi::path_of(path), ignored);
  if (!ignored && size > kStateLimit.most)
    throw std::runtime_error(fmt::format("{}: cannot be loaded: {}", path, kStateLimit.message));
  const auto text = efi::read_file(path, &error);
  if (!text)
    throw std::runtime_error(
        fmt::format("{}: cannot be read: {}", path, efi::file_error_words(error)));
  try {
    load_state(machine, *text);
  } catch (const StateError& wrong) {
    throw std::runtime_error(fmt::format("{}: cannot be loaded: {}", path, wrong.what()));
  } catch (const std::bad_alloc&) {
    throw std::runtime_error(path + ": cannot be loaded: not enough memory");
  }
}

bool save_variables(const Machine& machine, const std::string& path) {
  try {
    const int error = efi::replace_file(path, state_text(machine));
    if (error == 0) return true;
    complain(fmt::format("{}: cannot be written: {}", path, efi::file_error_words(error)));
  } catch (const StateError& wrong) {
    complain(fmt::format("{}: cannot be saved: {}", path, wrong.what()));
  } catch (const std::bad_alloc&) {
    complain(path + ": cannot be saved: not enough memory");
  }
  return false;
}

}  // namespace worksheet
