// The host interface: every record that crosses the boundary between a function pack and its host,
// and every service that a pack may ask of the host's library EfiUtils.
//
// A pack includes this header and links against EfiUtils; a host includes it and implements it.
// Integer words are 32 bits wide and pointers are the platform's. In a 32-bit build each record has
// exactly the offsets asserted at the end of this file; in a 64-bit build the same fields stand in
// the same order with natural alignment.
#pragma once

#include <cstddef>
#include <cstdint>

#pragma GCC visibility push(default)

struct EfiCallContext;
struct IqlAllocator;
struct EfiEvaluator;
struct sFunctionInfo;  // A signature descriptor; its layout is the host's own.

// The kind word with which every value begins.
enum Kind : std::int32_t {
  kErrorKind = 0,
  kScalarKind = 2,
  kStringKind = 3,
  kFunctionKind = 4,
  kMatrixKind = 5,
  kOtherFunctionKind = 8,
  kIdentifierKind = 10,
  kReferenceKind = 16,
};

// Any value: all that is known of it is its kind. The other records extend it.
struct Anyval {
  std::int32_t kind;  // One of Kind; a host may have kinds of its own.
};

// A counted string record.
struct sString : Anyval {
  const char* text;     // NUL-terminated.
  std::int32_t length;  // Of names and unit checks with the NUL, of other texts without.
};

// The name of a worksheet variable.
struct sIdentifier : Anyval {
  std::int32_t word1;   // 0
  const sString* name;  // Its text counts the NUL.
  std::int32_t word3;   // 2
};

// A list cell.
struct sCons {
  const void* car;   // What the list holds here.
  const sCons* cdr;  // The rest of the list; null at its end.
};

// A host string value. `length` does not count the terminating NUL.
struct aString : sString {
  // A new string holding a copy of `text`; null when the host has no memory.
  static aString* mk(IqlAllocator* allocator, const char* text);
};

// A number, real when `im` is 0.
struct aComplex : Anyval {
  std::int32_t host_word;  // Never touched by a pack.
  double re;               // The real part.
  double im;               // The imaginary part.
};

// An array. Element (i, j), both counted from 0, stands at index j * leading_dimension + i of each
// part array. A null `re` means that all real parts are 0; the matrix is complex exactly when `im`
// is not null, whatever it holds.
struct aMatrix : Anyval {
  std::int32_t leading_dimension;  // At least rows; equal to rows in what services and packs make.
  std::uint32_t byte_size;         // Of one part array: leading_dimension * cols * 8.
  std::int32_t host_word1;         // Never touched by a pack.
  double* re;                      // The real parts, or null. Freed by ::operator delete.
  double* im;                      // The imaginary parts, or null. Freed by ::operator delete.
  std::int32_t rows;               // Number of rows.
  std::int32_t cols;               // Number of columns.
  std::int32_t host_word2;         // Never touched by a pack.
  std::uint32_t flags;             // kHoldsNested, kIsNestedValue.

  // A new rows x cols matrix that adopts `re` and `im` (either may be null), which come from
  // ::operator new; `bytes` is rows * cols * 8. Null when the host has no memory: the arrays are
  // then still the caller's.
  static aMatrix* mk(IqlAllocator* allocator, int rows, int cols, double* re, double* im,
                     unsigned bytes);
};

// Bits of aMatrix::flags.
inline constexpr std::uint32_t kHoldsNested = 2;    // The matrix holds nested values.
inline constexpr std::uint32_t kIsNestedValue = 4;  // The array is itself held as a nested value.

// The upper half of the 64-bit pattern of a nested element; the lower half is the value's address.
inline constexpr std::uint32_t kNestedMark = 0xFFFFFFFFu;

// An error value.
struct aError : Anyval {
  std::int32_t mark;       // 0, but for the few errors that are documented with another.
  std::int32_t arg;        // The number of the argument at fault from 1; 0 for the whole call.
  const aString* message;  // For the user.
  Anyval* value;           // The offending value, or null.

  // A new error value; null when the host has no memory.
  static aError* mk(IqlAllocator* allocator, const aString* message, int mark, int arg,
                    Anyval* value);
};

// The destination of MtoVcol.
struct aVector {
  std::int32_t length;  // As many as the matrix has rows.
  double* elements;     // Room for so many; the caller's.
};

// Makes values. A pack calls only the ninth operation.
struct IqlAllocator {
  // The host's own.
  virtual void operation1() = 0;
  virtual void operation2() = 0;
  virtual void operation3() = 0;
  virtual void operation4() = 0;
  virtual void operation5() = 0;
  virtual void operation6() = 0;
  virtual void operation7() = 0;
  virtual void operation8() = 0;
  // Stores a new scalar in *out, its kind and parts not yet filled; null when there is no memory.
  virtual void new_scalar(aComplex** out) = 0;

 protected:
  ~IqlAllocator() = default;
};

// The evaluator. A pack calls only the fourth, fifth, sixth and eighth operations. What it pushes
// are addresses of its own words that hold values; they stay valid until the frame is popped.
struct EfiEvaluator {
  // The host's own.
  virtual void operation1() = 0;
  virtual void operation2() = 0;
  virtual void operation3() = 0;
  // Applies `function` to the values of the list `arguments`; the value, which may be an error
  // value, goes to *result.
  virtual void apply(Anyval* function, const sCons* arguments, Anyval** result) = 0;
  // Opens a frame, whose first root is the value in *root.
  virtual void push_root(Anyval** root) = 0;
  // Adds the word *local to the open frame.
  virtual void push_local(Anyval** local) = 0;
  // The host's own.
  virtual void operation7() = 0;
  // Closes the frame.
  virtual void pop_frame() = 0;

 protected:
  ~EfiEvaluator() = default;
};

// The first argument of every handler. One thread uses a context at a time.
struct EfiCallContext {
  IqlAllocator* allocator;  // Makes the values of the call.
  EfiEvaluator* evaluator;  // Knows which words hold values while the call lasts.
};

// A function of any type: a handler takes the EfiCallContext* and one Anyval* per argument of its
// signature, and returns an Anyval*.
using AnyHandler = void (*)();

// One row of a pack's function table.
struct FunctionEntry {
  sFunctionInfo* signature;  // Of the arguments, context values included, and the result.
  const sCons* context;      // Worksheet variables whose values follow the arguments, or null.
  std::uint8_t flags;        // Bits that the host interprets.
  std::uint8_t padding[3];   // 0
  const sString* name;       // The name in worksheets.
  std::int32_t reserved;     // 0
  AnyHandler handler;        // The function.
  const sString* unit_rule;  // How units combine; null: all arguments are plain numbers.
};

// A pack's identifier, different from that of every other pack.
struct PackIdentifier {
  std::uint8_t bytes[16];  // In the standard GUID byte order.
};

// --- Services. A `const char*` result is null on success, else a static message: "out of memory"
// unless another is named. New values are the host's. ---

// An error value with a copy of `message`, tied to argument `arg` (0: the call). The value for
// exhausted memory when the host cannot make it.
Anyval* mkError(EfiCallContext* context, const char* message, int arg);
// The same, carrying the offending value.
Anyval* patch_error(EfiCallContext* context, const char* message, Anyval* value, int arg);

// *copy becomes a new matrix equal to `source`, with arrays of its own; an absent one stays absent.
const char* matrix_copy(EfiCallContext* context, aMatrix* source, aMatrix** copy);
// The same; the copy always has an imaginary array.
const char* matrix_copy_add_imag(EfiCallContext* context, aMatrix* source, aMatrix** copy);

// Join result matrices, which become the joined value's, into one new value *out: pack_two_r and
// pack_three_c side by side (equal row counts), pack_two_rr one above the other (equal column
// counts). False, and *out untouched, when the shapes do not fit or the host has no memory.
bool pack_two_r(EfiCallContext* context, aMatrix* first, aMatrix* second, aMatrix** out);
bool pack_two_rr(EfiCallContext* context, aMatrix* first, aMatrix* second, aMatrix** out);
bool pack_three_c(EfiCallContext* context, aMatrix* first, aMatrix* second, aMatrix* third,
                  aMatrix** out);

// True when the matrix is square and equals its plain transpose exactly, in both parts.
bool symmetry(aMatrix* matrix);
// Scales every column to Euclidean length 1, in place; a column of zeros stays.
void renormalize_matrix_cols(aMatrix* matrix);
// True when the matrix holds nested values.
bool contains_ptrs(aMatrix* matrix);
// Clears column `col` of both parts from row `first_row` to the end, both counted from 0.
void zero_col(int col, int first_row, aMatrix* matrix);
// Copies the real parts of column `col`, counted from 0, to `vector`. "invalid index" when there is
// no such column, "array size mismatch" when the vector's length is not the number of rows.
const char* MtoVcol(aMatrix* matrix, int col, aVector* vector);
// Nonzero when x is not an integer; NaN and the infinities are none.
int nonint(double x);

// Enter a pack into, and remove it from, the host's catalogue; 0 on success. `module` is an
// address inside the pack's library.
std::int32_t RegisterEfiFunctionPack(void* module, const PackIdentifier* identifier);
std::int32_t UnregisterEfiFunctionPack(const PackIdentifier* identifier);

// --- Data: variables that are set before a pack is loaded, and stay as they are ---

extern Anyval* sError_OutOfMemory;  // The ready-made error value for exhausted memory.

extern sIdentifier* ORIGIN_sUnIdent;  // The worksheet variable ORIGIN.
extern sString* diag_sString;         // The name "diag".
extern sString* Transpose_sString;    // The name of the transpose operator.
extern sString* StripUnit_sString;    // The unit rule of results without a unit.

// Signatures: what the arguments are (any value, a number, a matrix), and what the result is.
extern sFunctionInfo* Any_to_Any;
extern sFunctionInfo* Any_to_Mat;
extern sFunctionInfo* Any_to_Num;
extern sFunctionInfo* Any_Any_to_Num;
extern sFunctionInfo* Any_Any_to_Any;
extern sFunctionInfo* Any_Any_to_Mat;
extern sFunctionInfo* Any_Any_Any_to_Any;
extern sFunctionInfo* Any_Any_Any_to_Mat;
extern sFunctionInfo* Mat_Mat_to_Mat;
extern sFunctionInfo* Any_Any_Any_Any_Any_Any_to_Any;

#pragma GCC visibility pop

#if UINTPTR_MAX == 0xFFFFFFFFu
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(sizeof(sString) == 12 && offsetof(sString, text) == 4 &&
              offsetof(sString, length) == 8);
static_assert(sizeof(sIdentifier) == 16 && offsetof(sIdentifier, name) == 8);
static_assert(sizeof(sCons) == 8);
static_assert(sizeof(aComplex) == 24 && offsetof(aComplex, re) == 8 &&
              offsetof(aComplex, im) == 16);
static_assert(sizeof(aMatrix) == 40 && offsetof(aMatrix, byte_size) == 8 &&
              offsetof(aMatrix, re) == 16 && offsetof(aMatrix, im) == 20 &&
              offsetof(aMatrix, rows) == 24 && offsetof(aMatrix, cols) == 28 &&
              offsetof(aMatrix, flags) == 36);
static_assert(sizeof(aError) == 20 && offsetof(aError, arg) == 8 &&
              offsetof(aError, message) == 12 && offsetof(aError, value) == 16);
static_assert(sizeof(FunctionEntry) == 28 && offsetof(FunctionEntry, flags) == 8 &&
              offsetof(FunctionEntry, name) == 12 && offsetof(FunctionEntry, handler) == 20 &&
              offsetof(FunctionEntry, unit_rule) == 24);
#pragma GCC diagnostic pop
#endif
