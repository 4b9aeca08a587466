#include "tests/support/matrix_library.hpp"

const char* const test::kMatrixLibrary = MATRIX_LIBRARY;
