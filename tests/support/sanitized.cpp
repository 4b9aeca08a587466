#include "tests/support/sanitized.hpp"

#if defined(MATRIX_SANITIZED)
const bool test::kSanitized = true;
#else
const bool test::kSanitized = false;
#endif
