#include "calc/message.hpp"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

#include "host/efiutils/system/files.hpp"
#include "nlohmann/json.hpp"

namespace calc {

namespace {

bool read_exactly(int descriptor, void* target, std::size_t bytes) {
  auto* at = static_cast<char*>(target);
  while (bytes > 0) {
    const ssize_t got = read(descriptor, at, bytes);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    at += got;
    bytes -= static_cast<std::size_t>(got);
  }
  return true;
}

bool write_bytes(int descriptor, const void* source, std::size_t bytes) {
  return efi::write_all(descriptor, {static_cast<const char*>(source), bytes}) == 0;
}

}  // namespace

Message message_of(const nlohmann::json& text) {
  return {text.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace), {}};
}

std::optional<Message> read_message(int descriptor) {
  std::array<std::uint32_t, 2> sizes;
  if (!read_exactly(descriptor, sizes.data(), sizeof sizes)) return std::nullopt;
  if (sizes[0] > kMostTextBytes || sizes[1] > kMostNumbers) return std::nullopt;
  Message message = {std::string(sizes[0], '\0'), std::vector<double>(sizes[1])};
  if (!read_exactly(descriptor, message.text.data(), sizes[0]) ||
      !read_exactly(descriptor, message.numbers.data(), sizes[1] * sizeof(double)))
    return std::nullopt;
  return message;
}

bool write_message(int descriptor, const Message& message) {
  const std::array<std::uint32_t, 2> sizes = {static_cast<std::uint32_t>(message.text.size()),
                                              static_cast<std::uint32_t>(message.numbers.size())};
  return write_bytes(descriptor, sizes.data(), sizeof sizes) &&
         write_bytes(descriptor, message.text.data(), message.text.size()) &&
         write_bytes(descriptor, message.numbers.data(), message.numbers.size() * sizeof(double));
}

}  // namespace calc
