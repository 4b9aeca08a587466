// The library of the pack that a test program is about.
#pragma once

namespace test {

extern const char* const kMatrixLibrary;  // Its path.

}  // namespace test
