// A pack's life in a host: its way into the catalogue and out of it, and loading and unloading.
#include <fmt/format.h>

#include <filesystem>
#include <string>

#include "host/efiutils/catalogue.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/packcheck/checks/checks.hpp"
#include "host/packcheck/memory/heap.hpp"
#include "host/packcheck/process/output_watch.hpp"
#include "host/packcheck/process/surroundings.hpp"
#include "host/packcheck/watch/environment.hpp"

namespace packcheck {

namespace {

namespace fs = std::filesystem;

using Entry = std::int32_t (*)();

// Calls an entry point of registration; a pack that lacks it is reported by another check.
std::int32_t call_entry(Session& session, const char* name) {
  session.step(name);
  const auto entry = reinterpret_cast<Entry>(session.pack().symbol(name));
  session.channel().enter();
  const std::int32_t status = entry();
  session.channel().leave();
  return status;
}

void expect_status(Session& session, const char* name, bool success, const char* when) {
  const std::int32_t status = call_entry(session, name);
  if ((status == 0) != success)
    session.report("status", fmt::format("{} gives {} {}", name, status, when));
}

// The catalogue holds the pack, once, or nothing at all.
void expect_entries(Session& session, std::size_t count, const char* when) {
  const auto entries = efi::read_catalogue();
  if (entries.size() != count) {
    session.report("entries", fmt::format("{} the catalogue has {} entries, not {}", when,
                                          entries.size(), count));
    return;
  }
  std::error_code failed;
  if (count == 1 &&
      !fs::equivalent(efi::path_of(entries[0].path), efi::path_of(session.options.pack), failed))
    session.report("path",
                   fmt::format("{} the catalogue names the library {}", when, entries[0].path));
  if (count == 1 && entries[0].id.find_first_not_of("{-0}") == std::string::npos)
    session.report("identifier", "its identifier is all zeros");
}

// How often a pack is loaded and unloaded, and after how many times memory has settled.
int load_count(Depth depth) {
  return depth == Depth::full ? 1000 : 20;
}
constexpr int kSettled = 3;

void report_differences(Session& session, const char* when, const Environment& before) {
  for (const std::string& difference : differences(before, environment()))
    session.report(when, fmt::format("{}: {}", when, difference));
}

// Loads the pack, calls each of its functions once with arguments that it takes and once with
// others, and unloads it.
void live_once(Session& session) {
  session.load();
  for (const Target& target : session.targets) {
    session.target = &target;
    const std::vector<Recipe> strings(target.base.size(), Recipe{.form = arguments::Form::string});
    for (const auto& arguments : {target.base, strings})
      Trial(session, {Family::base, with_context(target.function, arguments)}).invoke();
  }
  session.target = nullptr;
  session.unload();
}

}  // namespace

void check_registration(Session& session) {
  for (const char* name : {"DllRegisterServer", "DllUnregisterServer"})
    if (session.pack().symbol(name) == nullptr) return;
  expect_status(session, "DllUnregisterServer", false, "with an empty catalogue");
  expect_status(session, "DllRegisterServer", true, "");
  expect_entries(session, 1, "after registration");
  expect_status(session, "DllRegisterServer", true, "the second time");
  expect_entries(session, 1, "after the second registration");
  expect_status(session, "DllUnregisterServer", true, "");
  expect_entries(session, 0, "after its undoing");
  expect_status(session, "DllUnregisterServer", false, "the second time");
  // A host that fails to do its part says so, and the pack passes it on.
  set_variable("WORKSHEET_CATALOGUE", session.options.pack + "/catalogue");  // No directory.
  expect_status(session, "DllRegisterServer", false, "when the host cannot write the catalogue");
}

void check_load(Session& session) {
  OutputWatch output;
  const auto look = [&](const char* when, const Environment& before) {
    report_differences(session, when, before);
    if (const std::string words = output.take(); !words.empty())
      session.report(when, fmt::format("{}: {}", when, words));
  };
  reset_fp();
  const Environment before = environment();
  session.step("loading the pack");
  session.load();
  look("loading", before);
  session.step("unloading the pack");
  session.unload();
  look("unloading", before);

  session.step("loading, using and unloading the pack many times");
  heap::Usage settled = {};
  for (int k = 0; k < load_count(session.options.depth); ++k) {
    live_once(session);
    if (k == kSettled) settled = heap::usage();
  }
  const heap::Usage end = heap::usage();
  if (end != settled)
    session.report("memory", fmt::format("keeps {} blocks, {} bytes and {} blocks of malloc more "
                                         "for being loaded, used and unloaded again",
                                         end.blocks - settled.blocks, end.bytes - settled.bytes,
                                         end.mallocs - settled.mallocs));
  reset_fp();  // The checker's own arithmetic raises flags.
  look("use", before);
}

}  // namespace packcheck
