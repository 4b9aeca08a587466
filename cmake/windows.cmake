# For builds of Windows: names and places as its programs expect them, all programs and libraries in one
# directory, and the compiler's runtime libraries beside them. Exceptions and arrays cross from one
# library to another, so there is one runtime for all.
set(CMAKE_SHARED_LIBRARY_PREFIX "")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
set(runtime_names libstdc++-6.dll libwinpthread-1.dll)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  list(APPEND runtime_names libgcc_s_seh-1.dll)
else()
  list(APPEND runtime_names libgcc_s_dw2-1.dll)
endif()
set(runtime_libraries)
foreach(name ${runtime_names})
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE library OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  file(COPY_FILE ${library} ${PROJECT_BINARY_DIR}/${name} ONLY_IF_DIFFERENT)
  list(APPEND runtime_libraries ${PROJECT_BINARY_DIR}/${name})
endforeach()

# forbid_vex(TARGET FILES): the build of the target fails if AVX instructions are in these files of code.
function(forbid_vex target files)
  add_custom_command(TARGET ${target} POST_BUILD VERBATIM COMMAND ${CMAKE_COMMAND}
    -D OBJDUMP=${CMAKE_OBJDUMP} -D "FILES=$<JOIN:${files}, >"
    -P ${PROJECT_SOURCE_DIR}/cmake/windows/no_vex.cmake)
endfunction()
