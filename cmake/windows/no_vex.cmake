# Fails if code that may be left by a fault's exception holds AVX instructions: the unwinder would read
# them from their second byte (host/efiutils/fault_landing_x86_64.cpp). Kernels, which own nothing, may.
#   cmake -D OBJDUMP=... -D "FILES=a.obj b.obj" -P no_vex.cmake
separate_arguments(FILES)
execute_process(COMMAND ${OBJDUMP} --disassemble --no-show-raw-insn ${FILES}
  OUTPUT_VARIABLE code COMMAND_ERROR_IS_FATAL ANY)
if(NOT code MATCHES "\tmov")
  message(FATAL_ERROR "no code found")
endif()
if(code MATCHES "\n[^\n]*\tv[a-z0-9]+ [^\n]*%[xyz]mm[^\n]*")
  message(FATAL_ERROR "an AVX instruction outside of the kernels: ${CMAKE_MATCH_0}")
endif()
