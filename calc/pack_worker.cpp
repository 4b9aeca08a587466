// The process that holds function packs for a spreadsheet: whatever a pack does, the spreadsheet
// goes on. message.hpp has what it reads and writes.
//
//   pack_worker [--without PATH]... [PACK]...
//
// Without a pack it takes those of the catalogue, and when there are none the one beside it.
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <string_view>
#include <thread>

#include "calc/pack_calls.hpp"
#include "host/efiutils/catalogue.hpp"
#include "nlohmann/json.hpp"

namespace {

using calc::read_message;
using calc::write_message;

// What a pack may ask for; a spreadsheet shares its machine with other programs.
constexpr rlim_t kMostMemory = rlim_t{4} << 30;

struct Pipes {
  int input, output;
};

// Takes the pipes out of the way of packs that read or print.
Pipes take_pipes() {
  const Pipes pipes = {fcntl(0, F_DUPFD_CLOEXEC, 64), fcntl(1, F_DUPFD_CLOEXEC, 64)};
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(nothing, 0);
  dup2(nothing, 1);
  return pipes;
}

// Ends the process when nobody is left to read its answers, also in the middle of a call.
void end_with_reader(int output) {
  pollfd reader = {output, 0, 0};
  while (poll(&reader, 1, -1) < 1 || (reader.revents & (POLLERR | POLLHUP | POLLNVAL)) == 0) {
  }
  _exit(0);
}

void say(const Pipes& pipes, const nlohmann::json& text) {
  write_message(pipes.output, calc::message_of(text));
}

void load_packs(calc::PackCalls& calls, const Pipes& pipes, const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    say(pipes, {{"loading", path}});
    try {
      write_message(pipes.output, calls.load(path));
    } catch (const worksheet::PackError& error) {
      say(pipes, {{"failed", path}, {"reason", error.what()}});
    }
  }
}

// The packs of the catalogue, else the one beside this program or installed with it.
std::vector<std::string> known_packs(const Pipes& pipes) {
  std::vector<std::string> paths;
  try {
    for (const efi::CatalogueEntry& entry : efi::read_catalogue()) paths.push_back(entry.path);
  } catch (const efi::CatalogueError& error) {
    say(pipes, {{"failed", efi::catalogue_path()}, {"reason", error.what()}});
  }
  if (!paths.empty()) return paths;
  const std::string beside = worksheet::neighbouring_pack();
  if (!beside.empty()) return {beside};
  std::error_code failed;
  if (std::filesystem::exists(INSTALLED_PACK, failed)) paths.emplace_back(INSTALLED_PACK);
  return paths;
}

int serve(const Pipes& pipes, const std::vector<std::string>& arguments) {
  std::vector<std::string> named, without;
  for (std::size_t k = 0; k < arguments.size(); ++k)
    if (arguments[k] == "--without" && k + 1 < arguments.size())
      without.push_back(arguments[++k]);
    else
      named.push_back(arguments[k]);
  std::vector<std::string> paths = named.empty() ? known_packs(pipes) : named;
  std::erase_if(paths, [&](const std::string& path) {
    return std::find(without.begin(), without.end(), path) != without.end();
  });
  calc::PackCalls calls;
  load_packs(calls, pipes, paths);
  say(pipes, {{"ready", true}});
  while (const auto request = read_message(pipes.input))
    if (!write_message(pipes.output, calls.answer(*request))) break;
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  const Pipes pipes = take_pipes();
  std::thread(end_with_reader, pipes.output).detach();
  const rlimit memory = {kMostMemory, kMostMemory};
  setrlimit(RLIMIT_AS, &memory);
  const int status = serve(pipes, {argv + 1, argv + argc});
  // Packs are not unloaded: they are strangers, and the process ends.
  _exit(status);
} catch (const std::exception&) {
  _exit(2);
}
