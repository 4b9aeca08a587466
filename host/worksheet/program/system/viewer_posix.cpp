#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "host/efiutils/system/files.hpp"
#include "host/worksheet/program/system/viewer.hpp"

extern char** environ;

namespace worksheet {

namespace {

bool has_desktop() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"})
    if (const char* display = std::getenv(name); display != nullptr && *display != '\0')
      return true;
  return false;
}

}  // namespace

std::string picture_file(const std::string& svg) {
  std::error_code failed;
  const auto directory = std::filesystem::temp_directory_path(failed);
  if (failed) return {};
  constexpr std::string_view kSuffix = ".svg";
  std::string path = (directory / "worksheet-XXXXXX").string().append(kSuffix);
  const efi::Descriptor file(mkostemps(path.data(), static_cast<int>(kSuffix.size()), O_CLOEXEC));
  if (file.get() < 0 || efi::write_all(file.get(), svg) != 0) return {};
  return path;
}

// The desktop's viewer opens the file in a program of its own and ends. It is not the prompt's:
// Ctrl-C does not reach it, and what it says is not seen.
bool open_in_viewer(const std::string& path) {
  if (!has_desktop()) return false;
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
  // By way of a shell that ends at once: nobody has to wait for the viewer.
  const char* const arguments[] = {
      "sh", "-c", "command -v xdg-open >&2 && { xdg-open \"$1\" & }", "sh", path.c_str(), nullptr};
  pid_t child = -1;
  const int error = posix_spawn(&child, "/bin/sh", &actions, &attributes,
                                const_cast<char* const*>(arguments), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  if (error != 0) return false;
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace worksheet
