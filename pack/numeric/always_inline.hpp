// How functions in headers are declared that kernels include.
#pragma once

// Never a function of its own: code that is compiled for one instruction set must not serve
// another.
#define MATRIX_INLINE [[maybe_unused]] inline __attribute__((always_inline))
// The same for a lambda.
#define MATRIX_INLINE_LAMBDA __attribute__((always_inline))
