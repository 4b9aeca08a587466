#include <windows.h>
// After it.
#include <psapi.h>

#include <algorithm>
#include <cfenv>
#include <cstdint>
#include <vector>

#include "host/packs/leave.hpp"

namespace worksheet {

namespace {

// The module of a library.
struct Code {
  const void* symbol;  // By which it is known.
  std::uintptr_t begin = 0, end = 0;
};

// A call under way. The way out is the compiler's own: that of the C library would run what the
// frames between have to say.
struct Frame {
  Frame* outer;
  void* way_out[5];
};

std::vector<Code> pack_code;
Frame* volatile innermost = nullptr;

// Where the thread goes on once its context was changed. The call may have changed the control
// words.
[[noreturn]] void leave() {
  std::fesetenv(FE_DFL_ENV);
  Frame* const frame = innermost;
  __builtin_longjmp(frame->way_out, 1);
}

#ifdef _WIN64
DWORD64& instruction_of(CONTEXT& context) {
  return context.Rip;
}
DWORD64& stack_of(CONTEXT& context) {
  return context.Rsp;
}
#else
DWORD& instruction_of(CONTEXT& context) {
  return context.Eip;
}
DWORD& stack_of(CONTEXT& context) {
  return context.Esp;
}
#endif

}  // namespace

void add_pack_code(const void* symbol) {
  Code code = {symbol};
  HMODULE module = nullptr;
  MODULEINFO information = {};
  if (GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          static_cast<const wchar_t*>(symbol), &module) != 0 &&
      GetModuleInformation(GetCurrentProcess(), module, &information, sizeof information) != 0) {
    code.begin = reinterpret_cast<std::uintptr_t>(information.lpBaseOfDll);
    code.end = code.begin + information.SizeOfImage;
  }
  pack_code.push_back(code);
}

void forget_pack_code(const void* symbol) {
  const auto known = std::find_if(pack_code.begin(), pack_code.end(),
                                  [&](const Code& code) { return code.symbol == symbol; });
  if (known != pack_code.end()) pack_code.erase(known);
}

bool run_to_leave(const std::function<Anyval*()>& entry, Anyval** result) {
  Frame frame;
  frame.outer = innermost;
  if (__builtin_setjmp(frame.way_out) != 0) {
    innermost = innermost->outer;
    return false;
  }
  innermost = &frame;
  try {
    *result = entry();
  } catch (...) {
    innermost = frame.outer;
    throw;
  }
  innermost = frame.outer;
  return true;
}

bool is_in_pack_call() {
  return innermost != nullptr;
}

// The thread stands still: it goes on in `leave`.
bool leave_pack_call(void* context) {
  CONTEXT& interrupted = *static_cast<CONTEXT*>(context);
  const std::uintptr_t at = instruction_of(interrupted);
  const auto holds = [at](const Code& code) { return code.begin <= at && at < code.end; };
  if (innermost == nullptr || std::none_of(pack_code.begin(), pack_code.end(), holds)) return false;
  constexpr std::uintptr_t kAlignment = 16;
  auto& stack = stack_of(interrupted);
  stack = (stack & ~(kAlignment - 1)) - 4 * kAlignment - sizeof(void*);
  instruction_of(interrupted) = reinterpret_cast<std::uintptr_t>(&leave);
  return true;
}

}  // namespace worksheet
