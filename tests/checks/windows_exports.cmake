# Fails unless a DLL shows exactly the names of a list, and asks for nothing but the host's library,
# the runtime and the kernel.
#   cmake -D OBJDUMP=... -D LIBRARY=... -D "NAMES=a b" -P windows_exports.cmake
separate_arguments(NAMES)
execute_process(COMMAND ${OBJDUMP} --private-headers ${LIBRARY}
  OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
string(FIND "${headers}" "[Ordinal/Name Pointer] Table" at)
string(SUBSTRING "${headers}" ${at} -1 table)
string(REGEX MATCHALL "\n\t\\[ *[0-9]+\\] [^\n]*" shown "${table}")
list(TRANSFORM shown REPLACE "^\n\t\\[[^]]*\\] (\\+base\\[ *[0-9]+\\] +[0-9a-f]+ )?" "")
list(SORT shown)
list(SORT NAMES)
if(NOT shown STREQUAL NAMES)
  message(FATAL_ERROR "shown: ${shown}\nlisted: ${NAMES}")
endif()
string(REGEX MATCHALL "DLL Name: [^\n]*" libraries "${headers}")
foreach(library ${libraries})
  if(NOT library MATCHES "DLL Name: (EfiUtils|libstdc\\+\\+-6|libgcc_s_[a-z0-9]+-1|KERNEL32|msvcrt)\\.dll")
    message(FATAL_ERROR "asks for ${library}")
  endif()
endforeach()
