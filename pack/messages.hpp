// The messages that more than one file gives. Their words are what users read and hosts test for.
#pragma once

namespace matrix_pack {

// Of the arguments.
inline constexpr const char* kMustBeArray = "must be array";
inline constexpr const char* kMustBeInteger = "must be integer";
inline constexpr const char* kMustBeReal = "must be real";
inline constexpr const char* kMustBeSquare = "must be square";
inline constexpr const char* kMustBeVector = "must be vector";
inline constexpr const char* kMayNotBeNested = "may not be nested";
inline constexpr const char* kNonScalar = "non-scalar value";
inline constexpr const char* kSizeTooLarge = "size too large";

// Of the cores.
inline constexpr const char* kInvalidDimension = "invalid dimension";
inline constexpr const char* kSizeMismatch = "array size mismatch";
inline constexpr const char* kFewerRowsThanColumns = "number of rows less than number of columns";
inline constexpr const char* kOverflow = "overflow";
inline constexpr const char* kSingularity = "singularity";
inline constexpr const char* kSingularMatrix = "singular matrix";
inline constexpr const char* kTooManyIterations = "too many iterations";
inline constexpr const char* kOutOfMemory = "out of memory";
inline constexpr const char* kUnknownError = "Unknown error";

}  // namespace matrix_pack
