// The standard streams of a process, sent where they can be looked at.
#pragma once

#include <string>

namespace packcheck {

class OutputWatch {
 public:
  OutputWatch();

  // What has come out since the last question: where, and the text; empty if nothing.
  std::string take();

 private:
  int streams_[2];
};

}  // namespace packcheck
