// operator new of this program, for the libraries too: operator_new_posix.cpp,
// operator_new_windows.cpp.
#pragma once

namespace packcheck {

// Lets every library of this process use the program's operator new and delete (heap.hpp). Throws
// std::runtime_error where that cannot be.
void share_operator_new();

}  // namespace packcheck
