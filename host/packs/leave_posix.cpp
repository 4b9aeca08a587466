#include <link.h>
#include <setjmp.h>
#include <signal.h>
#include <ucontext.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "host/packs/leave.hpp"

namespace worksheet {

namespace {

// The executable part of a library.
struct Code {
  const void* symbol;  // By which it is known.
  std::uintptr_t begin = 0, end = 0;
};

// A call under way.
struct Frame {
  Frame* outer;
  sigjmp_buf way_out;
};

std::vector<Code> pack_code;
Frame* volatile innermost = nullptr;

// Called for each library that is loaded; anything but 0 ends the search.
int find_code(dl_phdr_info* library, std::size_t, void* sought) {
  auto& code = *static_cast<Code*>(sought);
  const auto address = reinterpret_cast<std::uintptr_t>(code.symbol);
  Code found = code;
  bool is_here = false;
  for (int k = 0; k < library->dlpi_phnum; ++k) {
    const auto& part = library->dlpi_phdr[k];
    if (part.p_type != PT_LOAD) continue;
    const std::uintptr_t begin = library->dlpi_addr + part.p_vaddr, end = begin + part.p_memsz;
    is_here = is_here || (begin <= address && address < end);
    if ((part.p_flags & PF_X) != 0) {
      found.begin = begin;
      found.end = end;
    }
  }
  if (is_here) code = found;
  return is_here ? 1 : 0;
}

// Where the interrupted instruction stands; 0 where that is not known.
std::uintptr_t instruction_of([[maybe_unused]] const ucontext_t* context) {
#if defined(__x86_64__)
  return static_cast<std::uintptr_t>(context->uc_mcontext.gregs[REG_RIP]);
#elif defined(__i386__)
  return static_cast<std::uintptr_t>(context->uc_mcontext.gregs[REG_EIP]);
#elif defined(__aarch64__)
  return static_cast<std::uintptr_t>(context->uc_mcontext.pc);
#else
  return 0;
#endif
}

}  // namespace

void add_pack_code(const void* symbol) {
  Code code = {symbol};
  dl_iterate_phdr(find_code, &code);
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
  if (sigsetjmp(frame.way_out, 0) != 0) {
    innermost = frame.outer;
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

bool leave_pack_call(void* context) {
  const auto* const interrupted = static_cast<const ucontext_t*>(context);
  const std::uintptr_t at = instruction_of(interrupted);
  const auto holds = [at](const Code& code) { return code.begin <= at && at < code.end; };
  Frame* const frame = innermost;
  if (frame == nullptr || std::none_of(pack_code.begin(), pack_code.end(), holds)) return false;
  sigprocmask(SIG_SETMASK, &interrupted->uc_sigmask, nullptr);
  siglongjmp(frame->way_out, 1);
}

}  // namespace worksheet
