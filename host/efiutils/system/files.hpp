// Files: reading them whole, and writing them so that nobody sees half of one.
//
// What goes wrong is told as an errno, or as kNoFile; file_error_words puts either into words.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace efi {

#pragma GCC visibility push(default)

// What stands there is no file: a pipe or a device, which may have no end.
inline constexpr int kNoFile = -1;

// "no such file or directory", "a pipe or a device, not a file".
std::string file_error_words(int error);

// A file descriptor, closed on every way out; negative: none.
class Descriptor {
 public:
  explicit Descriptor(int opened = -1) : fd_(opened) {}
  ~Descriptor() { close(); }
  Descriptor(Descriptor&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
  Descriptor& operator=(Descriptor&& other) noexcept;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return fd_; }
  void close();

 private:
  int fd_;
};

// Writes all of the content; gives 0, or an errno.
int write_all(int descriptor, std::string_view content);

// Appends all that is left of an open file; gives 0, or an errno.
int read_all(int descriptor, std::string& content);

// 0 for a file that was opened, else why it is none: a directory, a pipe or a device.
int file_error(int descriptor);

// Opens what stands at a path. Negative: errno says why not. A pipe is not waited for.
Descriptor open_to_read(const std::string& path);
Descriptor open_to_wait(const std::string& path);  // A pipe is.
Descriptor open_directory(const std::string& path);
// The same for a path without links below an open directory, of which `whole` is the path from the
// start on, and for nothing outside of it, whoever puts a link in the way meanwhile.
enum class Opened { file, directory };
Descriptor open_beneath(const Descriptor& directory, const std::string& path,
                        const std::string& whole, Opened what);

// The content of a file; anything else that stands there is refused, and not waited for. Nothing
// when it cannot be had, and then *error says why.
std::optional<std::string> read_file(const std::string& path, int* error = nullptr);

// A file in the making. Nobody sees it until `commit` puts it in its place, whole; until then it
// goes with the program, however that ends, and with this object.
class NewFile {
 public:
  // What is to stand at `path`, links followed. Only a file is ever replaced.
  explicit NewFile(const std::string& path);
  // What is to stand under `name` in an open directory. A link of that name is not followed.
  NewFile(Descriptor directory, const std::string& name);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  // Why there is nothing to write to; 0 if there is.
  int error() const { return error_; }
  int descriptor() const { return file_.get(); }

  // Puts the file in its place; one that stood there passes its permissions on. Gives 0, or why
  // nothing has changed.
  int commit();

 private:
  void begin();
  int look();
  void open_temporary();
  int with_free_name(const std::function<int(const std::string&)>& make);
  int link_as(const std::string& name) const;
  int take_place();

  Descriptor directory_;
  std::string name_;
  Descriptor file_;
  std::string temporary_;  // A name that goes with this object; most often there is none.
  bool replaces_ = false;  // Whether a file stands in the place,
  unsigned mode_ = 0;      // and its permissions.
  int error_ = 0;
};

// Writes the content to a new file that takes the place of `path` when it is whole. Gives 0, or why
// nothing has changed.
int replace_file(const std::string& path, std::string_view content);

// A path with this ending in the directory of temporary files where, most likely, nothing stands.
// Empty when there is no such directory.
std::string temporary_path(const std::string& ending);

// Removes the temporary files that a NewFile for `path` left beside it where the program was killed
// in the moment of the change. Not while another one is being made.
void remove_leavings(const std::string& path);

#pragma GCC visibility pop

}  // namespace efi
