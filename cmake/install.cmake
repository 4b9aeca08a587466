# What host and pack authors install: headers, both libraries, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(header_dir ${CMAKE_INSTALL_INCLUDEDIR}/matrix_pack)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/matrix_pack)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS EfiUtils matrix EXPORT matrix_pack
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
set(public_headers
  pack/host_interface.hpp pack/exports.hpp pack/frame/faults.hpp pack/frame/fp_control.hpp
  host/efiutils/catalogue.hpp host/efiutils/evaluator.hpp host/efiutils/fault_translation.hpp
  host/efiutils/function_info.hpp host/efiutils/store.hpp host/efiutils/watch.hpp)
foreach(header ${public_headers})
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${header_dir}/${folder})
endforeach()
target_include_directories(EfiUtils INTERFACE $<INSTALL_INTERFACE:${header_dir}>)
target_compile_features(EfiUtils INTERFACE cxx_std_20)

# Beside the library, under its name.
if(WIN32)
  install(FILES docs/functions.md DESTINATION ${CMAKE_INSTALL_BINDIR} RENAME matrix.md)
else()
  install(FILES docs/functions.md DESTINATION ${CMAKE_INSTALL_LIBDIR} RENAME libmatrix.md)
endif()
install(EXPORT matrix_pack NAMESPACE matrix_pack:: FILE matrix_packTargets.cmake
  DESTINATION ${package_dir})
configure_package_config_file(cmake/matrix_packConfig.cmake.in matrix_packConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(matrix_packConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/matrix_packConfig.cmake
  ${PROJECT_BINARY_DIR}/matrix_packConfigVersion.cmake DESTINATION ${package_dir})

set(prefix_from_pkgconfig /)
cmake_path(RELATIVE_PATH prefix_from_pkgconfig BASE_DIRECTORY /${pkgconfig_dir})
configure_file(cmake/matrix_pack.pc.in matrix_pack.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/matrix_pack.pc DESTINATION ${pkgconfig_dir})
