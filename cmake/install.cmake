# What a host author installs: headers, both libraries, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(header_dir ${CMAKE_INSTALL_INCLUDEDIR}/matrix_pack)

install(TARGETS EfiUtils matrix EXPORT matrix_pack LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES pack/host_interface.hpp pack/exports.hpp pack/faults.hpp pack/fp_control.hpp
  DESTINATION ${header_dir}/pack)
install(FILES host/efiutils/evaluator.hpp host/efiutils/fault_translation.hpp
  host/efiutils/function_info.hpp host/efiutils/store.hpp
  DESTINATION ${header_dir}/host/efiutils)
target_include_directories(EfiUtils INTERFACE $<INSTALL_INTERFACE:${header_dir}>)

install(EXPORT matrix_pack NAMESPACE matrix_pack::
  FILE matrix_packTargets.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/matrix_pack)
configure_package_config_file(cmake/matrix_packConfig.cmake.in matrix_packConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/matrix_pack)
write_basic_package_version_file(matrix_packConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/matrix_packConfig.cmake
  ${PROJECT_BINARY_DIR}/matrix_packConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/matrix_pack)

configure_file(cmake/matrix_pack.pc.in matrix_pack.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/matrix_pack.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
