# The pack. Everything between a handler and a kernel may be left by an exception that a processor
# fault raises; kernels own nothing and are compiled on their own, without that switch (it turns
# vectorization off) and once for each instruction set. No vector crosses a function call that is not
# inlined, so the warning about how one would be passed does not apply.
file(GLOB_RECURSE pack_sources CONFIGURE_DEPENDS
  pack/*.cpp structural/*.cpp linsys/*.cpp norms/*.cpp eigen/*.cpp svd/*.cpp)
keep_platform(pack_sources)
set(kernel_sources ${pack_sources})
list(FILTER kernel_sources INCLUDE REGEX "_kernels\\.cpp$")
list(FILTER pack_sources EXCLUDE REGEX "(_kernels|/fault_mode)\\.cpp$")

add_library(pack_objects OBJECT ${pack_sources})
target_link_libraries(pack_objects PUBLIC matrix_options PRIVATE matrix_faulting)
# Those of a folder are compiled together, in half the time: what a file has for itself has a name that no
# other file of the folder gives to something else. Those of the frame are not: that it is elsewhere keeps
# the compiler from moving arithmetic across a change of the control register.
set_target_properties(pack_objects PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
foreach(source ${pack_sources})
  cmake_path(RELATIVE_PATH source BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE group)
  cmake_path(GET group PARENT_PATH group)
  string(REPLACE "/" "_" group ${group})
  if(NOT group STREQUAL "pack_frame")
    set_property(SOURCE ${source} PROPERTY UNITY_GROUP ${group})
  endif()
endforeach()
set(pack_parts pack_objects)

# This compiler knows no stack that is aligned for vectors of 32 bytes there (its bug 54412), and
# stores them as if it were: the assembler turns those moves into moves of any alignment.
if(WIN32)
  set(vector_moves -Wa,-muse-unaligned-vector-move)
endif()

# Of three sets made from one source the sanitizers see the narrowest and the widest.
set(unseen_set)
if(MATRIX_SANITIZE AND NOT MATRIX_FUZZ)
  set(unseen_set v3)
endif()

function(add_kernel_set name)
  if(NOT kernel_sources)
    return()
  endif()
  set(pack_parts ${pack_parts} kernels_${name} PARENT_SCOPE)
  if(name STREQUAL unseen_set AND MATRIX_UNSEEN_FROM)
    add_unseen_objects(kernels_${name} ${kernel_sources})
    return()
  endif()
  add_library(kernels_${name} OBJECT ${kernel_sources})
  target_link_libraries(kernels_${name} PUBLIC matrix_options)
  target_compile_definitions(kernels_${name} PRIVATE MATRIX_KERNEL_SET=${name})
  target_compile_options(kernels_${name} PRIVATE
    $<$<CONFIG:Release>:-O3> -fasynchronous-unwind-tables -Wno-psabi ${vector_moves} ${ARGN})
  if(name STREQUAL unseen_set)
    target_compile_options(kernels_${name} PRIVATE -fno-sanitize=all)
  endif()
endfunction()

add_kernel_set(baseline)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" AND CMAKE_SIZEOF_VOID_P EQUAL 8)
  # No fused operations: gcc 12 makes some in spite of -ffp-contract=off. Those of v4's own it still
  # may make; a test looks for them.
  add_kernel_set(v3 -march=x86-64-v3 -mno-fma)
  add_kernel_set(v4 -march=x86-64-v4 -mno-fma)
endif()

include(${CMAKE_CURRENT_LIST_DIR}/exports.cmake)

# add_pack(NAME trapping|flags): the library NAME, and NAME_internals, for tests and benchmarks: all of
# it, with its internals in reach. The two ways of finding faults differ in one object.
function(add_pack name faults)
  set(fault_mode ${name}_fault_mode)
  add_library(${fault_mode} OBJECT ${PROJECT_SOURCE_DIR}/pack/frame/fault_mode.cpp)
  target_link_libraries(${fault_mode} PRIVATE matrix_options)
  if(faults STREQUAL "flags")
    target_compile_definitions(${fault_mode} PRIVATE MATRIX_FAULTS_FLAGS=1)
  endif()

  add_library(${name}_internals INTERFACE)
  target_link_libraries(${name}_internals INTERFACE pack_objects EfiUtils)
  add_library(${name} SHARED)
  foreach(part ${pack_parts} ${fault_mode})
    target_sources(${name}_internals INTERFACE $<TARGET_OBJECTS:${part}>)
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:${part}>)
  endforeach()
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:matrix_options> EfiUtils)
  if(WIN32)
    target_sources(${name} PRIVATE ${pack_exports})
    forbid_vex(${name} $<TARGET_OBJECTS:pack_objects>)
  else()
    target_link_options(${name} PRIVATE -Wl,--version-script=${pack_exports})
    # clang's sanitizers are part of the program, not of its libraries.
    if(NOT (MATRIX_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang"))
      target_link_options(${name} PRIVATE -Wl,-z,defs)
    endif()
  endif()
  set_target_properties(${name} PROPERTIES LINK_DEPENDS ${pack_exports}
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()

add_pack(matrix ${MATRIX_FAULTS})
# Hosts show it: the reference of the functions lies beside the library, under its name.
configure_file(${PROJECT_SOURCE_DIR}/docs/functions.md
  ${PROJECT_BINARY_DIR}/${CMAKE_SHARED_LIBRARY_PREFIX}matrix.md COPYONLY)
