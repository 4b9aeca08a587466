// Files: reading and writing them whole.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace efi {

#pragma GCC visibility push(default)

// A file descriptor, closed on every way out; negative: none.
class Descriptor {
 public:
  explicit Descriptor(int opened) : fd_(opened) {}
  ~Descriptor() { close(); }
  Descriptor(Descriptor&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return fd_; }
  void close();

 private:
  int fd_;
};

// Writes all of the content; gives 0, or an errno.
int write_all(int descriptor, std::string_view content);

// The content of a file; nothing when it cannot be opened.
std::optional<std::string> read_file(const std::string& path);

// Writes a new file beside `path` and puts it in the old one's place: a reader, and whoever looks
// after this program was killed, sees one or the other. Gives 0, or an errno: nothing has changed.
int replace_file(const std::string& path, std::string_view content);

#pragma GCC visibility pop

}  // namespace efi
