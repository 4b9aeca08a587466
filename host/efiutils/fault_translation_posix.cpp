#include <signal.h>
#include <ucontext.h>

#include <system_error>

#include "host/efiutils/fault_translation.hpp"
#include "pack/frame/faults.hpp"

namespace efi {

namespace {

// The structured-exception code of a fault; 0 for a signal that is not one.
std::uint32_t fault_code(int si_code) {
  switch (si_code) {
    case FPE_FLTDIV:
      return kFaultDivideByZero;
    case FPE_FLTINV:
      return kFaultInvalid;
    case FPE_FLTOVF:
      return kFaultOverflow;
    case FPE_FLTUND:
      return 0xC0000093u;
    case FPE_FLTRES:
      return 0xC000008Fu;
    case FPE_FLTSUB:
      return 0xC000008Cu;
    case FPE_INTDIV:
      return 0xC0000094u;
    case FPE_INTOVF:
      return 0xC0000095u;
    default:
      return 0;
  }
}

#if defined(__x86_64__) || defined(__i386__)
// Loads the x87 control word and raises status flags.
void load_x87(std::uint32_t control, std::uint32_t flags) {
  struct {
    std::uint32_t control, status, others[5];
  } environment;
  asm volatile("fnstenv %0" : "=m"(environment));
  environment.control = control;
  environment.status |= flags & 0x3Fu;
  asm volatile("fldenv %0" : : "m"(environment));
}
#endif

// The kernel gives a signal handler a fresh floating-point unit. What unwinding leads to expects
// the interrupted x87 control word and flags; those of SSE2 are for the exception to take. Its
// exceptions stay masked: nothing may fault while a fault is on its way.
void take_over_unit([[maybe_unused]] const ucontext_t* interrupted) {
#if defined(__x86_64__)
  if (const auto* unit = interrupted->uc_mcontext.fpregs) {
    load_x87(unit->cwd, unit->swd);
    _mm_setcsr(matrix_pack::kAllMasked | (unit->mxcsr & 0x3Fu));
  }
#elif defined(__i386__)
  if (const auto* unit = interrupted->uc_mcontext.fpregs)
    load_x87(static_cast<std::uint32_t>(unit->cw), static_cast<std::uint32_t>(unit->sw));
#endif
}

void on_fault(int signal, siginfo_t* info, void* interrupted) {
  const std::uint32_t code = fault_code(info->si_code);
  if (code == 0) {
    // Sent by a process, not raised by an instruction that an exception could leave.
    ::signal(signal, SIG_DFL);
    raise(signal);
    return;
  }
  take_over_unit(static_cast<const ucontext_t*>(interrupted));
  throw SE_FPE_Exception(code);
}

}  // namespace

void install_fault_translation() {
  struct sigaction action = {};
  action.sa_sigaction = on_fault;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  if (sigaction(SIGFPE, &action, nullptr) != 0)
    throw std::system_error(errno, std::generic_category(), "sigaction");
}

}  // namespace efi
