#include "host/packcheck/process/channel.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace packcheck {

void Channel::send(const Message& message) const {
  if (efi::write_all(writing_.get(), line_of(message)) != 0) std::_Exit(1);
}

void Channel::begin(int call, std::string_view doing) {
  progress->call = call;
  const std::size_t length = std::min(doing.size(), sizeof progress->doing - 1);
  std::memcpy(progress->doing, doing.data(), length);
  progress->doing[length] = '\0';
}

}  // namespace packcheck
