# The programs and documents that are installed for worksheet users, and Debian packages: of all that
# belongs to no component, and of each component that says so (calc/CMakeLists.txt).
#
#   ./package        makes build/package/*.deb
set(doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/matrix-pack)
install(TARGETS worksheet RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES docs/man/worksheet.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES README.md CHANGELOG.md DESTINATION ${doc_dir})
file(GLOB documents CONFIGURE_DEPENDS docs/*.md docs/*.png)
install(FILES ${documents} DESTINATION ${doc_dir}/docs)
install(DIRECTORY examples/ DESTINATION ${doc_dir}/examples)

# Syntax files of editors and completion of shells, made of the program's own words.
set(editor_files ${PROJECT_BINARY_DIR}/editors)
file(GLOB editor_sources CONFIGURE_DEPENDS editors/*)
add_custom_command(OUTPUT ${editor_files}/worksheet.vim
  COMMAND ${CMAKE_COMMAND} -E env WORKSHEET_CATALOGUE=none ${CMAKE_COMMAND}
    -D PROGRAM=$<TARGET_FILE:worksheet> -D PACK=$<TARGET_FILE:matrix>
    -D SOURCE=${PROJECT_SOURCE_DIR}/editors -D TARGET=${editor_files}
    -P ${PROJECT_SOURCE_DIR}/cmake/editors.cmake
  DEPENDS worksheet matrix ${editor_sources} ${PROJECT_SOURCE_DIR}/cmake/editors.cmake)
add_custom_target(editor_files ALL DEPENDS ${editor_files}/worksheet.vim)
set(data_dir ${CMAKE_INSTALL_DATAROOTDIR})
install(FILES ${editor_files}/worksheet.vim DESTINATION ${data_dir}/vim/vimfiles/syntax)
install(FILES editors/ftdetect.vim DESTINATION ${data_dir}/vim/vimfiles/ftdetect RENAME worksheet.vim)
install(FILES ${editor_files}/worksheet.xml
  DESTINATION ${data_dir}/org.kde.syntax-highlighting/syntax)
install(FILES ${editor_files}/worksheet.tmLanguage.json DESTINATION ${data_dir}/matrix-pack/editors)
install(FILES ${editor_files}/worksheet.bash
  DESTINATION ${data_dir}/bash-completion/completions RENAME worksheet)
install(FILES ${editor_files}/_worksheet DESTINATION ${data_dir}/zsh/vendor-completions)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME matrix-pack)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL Unspecified)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME matrix-pack)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "matrix maintainers <maintainers@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# What the worksheet draws with.
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_DEPENDS "gnuplot-nox | gnuplot")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/finish.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION math)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The package's own libraries are not in the packaging tool's database yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_COMPONENT_UNSPECIFIED_DESCRIPTION
"matrix functions for worksheet hosts, with a reference host
A function pack that adds 37 matrix functions to a worksheet application:
linear systems, factorizations, eigenvalues, singular values, norms and
condition numbers. It gives the same bits on every machine.

With it come the worksheet program, which evaluates worksheets with units at
a prompt or from files, packcheck, which tries packs out, and the library and
headers with which other hosts and packs are built.")
if(MATRIX_CALC)
  list(APPEND CPACK_COMPONENTS_ALL calc)
  set(CPACK_DEBIAN_CALC_PACKAGE_NAME matrix-pack-calc)
  set(CPACK_DEBIAN_CALC_PACKAGE_DEPENDS
    "matrix-pack (= ${PROJECT_VERSION}-1), libreoffice-calc | libreoffice-calc-nogui, python3-uno")
  set(CPACK_COMPONENT_CALC_DESCRIPTION
"function packs in LibreOffice Calc
The functions of all function packs as array formulas of LibreOffice Calc.
The packs run in a process of their own, so that Calc goes on whatever a
pack does.")
endif()
if(MATRIX_NOTEBOOK)
  list(APPEND CPACK_COMPONENTS_ALL notebook)
  set(CPACK_DEBIAN_NOTEBOOK_PACKAGE_NAME matrix-pack-jupyter)
  set(CPACK_DEBIAN_NOTEBOOK_PACKAGE_DEPENDS "matrix-pack (= ${PROJECT_VERSION}-1)")
  set(CPACK_DEBIAN_NOTEBOOK_PACKAGE_RECOMMENDS "jupyter-notebook | jupyter-client")
  set(CPACK_COMPONENT_NOTEBOOK_DESCRIPTION
"worksheets in Jupyter notebooks
A notebook kernel that evaluates worksheets with units and matrices: values
as formulas, pictures, completion, and help.")
endif()
string(TIMESTAMP debian_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(cmake/debian/changelog.in debian_changelog @ONLY)
include(CPack)
