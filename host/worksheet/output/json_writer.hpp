// JSON, written piece by piece: what is written need not fit in memory, and takes none.
#pragma once

#include <array>
#include <cstddef>
#include <iosfwd>
#include <string_view>

namespace worksheet {

class JsonWriter {
 public:
  explicit JsonWriter(std::ostream& out) : out_(out) {}
  ~JsonWriter() = default;
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  // What the caller knows to be JSON.
  void raw(std::string_view text);
  // A string; bytes that are no UTF-8 become replacement characters.
  void string(std::string_view text);
  void integer(long long value);
  // A number; those that JSON has no number for are the strings "nan", "inf" and "-inf".
  void number(double value);

  // Hands over what is held; to be called at the end.
  void flush();

  // Whether nobody takes what is written any more.
  bool is_refused() const { return refused_; }

 private:
  // Room for any number.
  static constexpr std::size_t kMostNumber = 64;
  void need(std::size_t room);

  std::ostream& out_;
  std::array<char, 4096> held_;
  std::size_t used_ = 0;
  bool refused_ = false;
};

}  // namespace worksheet
