# unit_entries.inc, the list of units for programs that have none of the libraries that read it: read
# by a program for this machine, which has them.
find_program(MATRIX_NATIVE_CXX NAMES c++ g++ REQUIRED
  DOC "A compiler for the machine that builds")
set(writer_sources ${PROJECT_SOURCE_DIR}/cmake/windows/write_units.cpp
  ${PROJECT_SOURCE_DIR}/host/units/unit_database_posix.cpp
  ${PROJECT_SOURCE_DIR}/host/units/unit_definitions_posix.cpp
  ${PROJECT_SOURCE_DIR}/host/units/rational.cpp
  ${PROJECT_SOURCE_DIR}/host/text/text.cpp
  ${PROJECT_SOURCE_DIR}/host/text/utf8.cpp
  ${PROJECT_SOURCE_DIR}/host/efiutils/system/files.cpp
  ${PROJECT_SOURCE_DIR}/host/efiutils/system/files_posix.cpp
  ${PROJECT_SOURCE_DIR}/host/efiutils/system/platform_posix.cpp)
set(unit_entries ${CMAKE_CURRENT_BINARY_DIR}/unit_entries.inc)
add_custom_command(OUTPUT ${unit_entries} VERBATIM
  COMMAND ${MATRIX_NATIVE_CXX} -std=c++20 -O0 -DWORKSHEET_UNITS="${units_file}"
    -I${PROJECT_SOURCE_DIR} ${writer_sources} -o write_units -ludunits2 -lexpat -lfmt -ldl
  COMMAND ${CMAKE_CURRENT_BINARY_DIR}/write_units ${unit_entries}
  DEPENDS ${writer_sources} units.xml)
