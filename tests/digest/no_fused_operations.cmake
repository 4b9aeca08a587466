# Fails if a library contains a fused multiply-add, which rounds once where the pack's rule is to round
# twice. gcc 12 makes some of neighbouring sums and differences of products (vfmaddsub) in spite of
# -ffp-contract=off. cmake -D OBJDUMP=... -D LIBRARY=... -P no_fused_operations.cmake
execute_process(COMMAND ${OBJDUMP} --disassemble --no-show-raw-insn ${LIBRARY}
  OUTPUT_VARIABLE code COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n[^\n]*\t(vfn?m(add|sub)|fn?m(add|sub)|fml[as]|fcmla)[^\n]*" fused "${code}")
if(fused)
  list(LENGTH fused count)
  list(GET fused 0 first)
  message(FATAL_ERROR "${count} fused operations, the first of them:${first}")
endif()
if(NOT code MATCHES "mul")
  message(FATAL_ERROR "no multiplication found: this is not the pack's code")
endif()
