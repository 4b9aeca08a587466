# A Debian package of what cmake --install gives: cpack in the build directory makes it.
install(TARGETS worksheet RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES docs/man/worksheet.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs FILES_MATCHING PATTERN "*.md")
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME matrix-pack)
set(CPACK_PACKAGE_CONTACT "matrix maintainers <maintainers@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Matrix functions for worksheet hosts, with a reference host")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION math)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The package's own libraries are not in the packaging tool's database yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/host/efiutils)
set(CPACK_STRIP_FILES ON)
include(CPack)
