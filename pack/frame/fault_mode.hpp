// How a pack finds arithmetic faults.
#pragma once

namespace matrix_pack {

// Whether the processor stops at the instruction and the host makes an exception of it. Otherwise
// faults are read from the status flags: where the processor or the compiler cannot do the former,
// and in packs made for hosts that translate no faults. Nothing else differs between the two.
bool faults_trap() noexcept;

}  // namespace matrix_pack
