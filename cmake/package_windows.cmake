# What users of Windows get, and a zip of it all:
#
#   cmake --workflow --preset package-windows        makes build/package-windows/matrix-pack-*-win64.zip
add_executable(minimal_host examples/minimal_host/minimal_host.cpp)
# Last, behind what EfiUtils brings along in this tree.
set_property(SOURCE examples/minimal_host/minimal_host.cpp APPEND PROPERTY
  COMPILE_OPTIONS -fnon-call-exceptions -Wno-conversion)
target_compile_features(minimal_host PRIVATE cxx_std_20)
target_include_directories(minimal_host PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(minimal_host PRIVATE EfiUtils)

install(TARGETS minimal_host RUNTIME DESTINATION bin)
if(MATRIX_WORKSHEET)
  install(TARGETS worksheet RUNTIME DESTINATION bin)
endif()
install(FILES ${runtime_libraries} DESTINATION bin)
install(FILES README.md CHANGELOG.md DESTINATION doc)
file(GLOB documents CONFIGURE_DEPENDS docs/*.md docs/*.png)
install(FILES ${documents} DESTINATION doc/docs)
install(DIRECTORY examples/ DESTINATION examples)

# The terms of what is shipped besides our own, the runtime libraries and the libraries of headers that
# are compiled in, as the packages that brought them state them.
string(REPLACE "_" "-" machine ${CMAKE_SYSTEM_PROCESSOR})
foreach(package gcc-mingw-w64-${machine}-posix-runtime mingw-w64-${machine}-dev
    libcli11-dev libfmt-dev nlohmann-json3-dev)
  install(FILES /usr/share/doc/${package}/copyright DESTINATION licences RENAME ${package}.txt)
endforeach()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME matrix-pack)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
math(EXPR word_bits "8 * ${CMAKE_SIZEOF_VOID_P}")
set(CPACK_SYSTEM_NAME win${word_bits})
set(CPACK_STRIP_FILES ON)
include(CPack)
