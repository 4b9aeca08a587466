# Runs while cpack makes the Debian package, on the tree that goes into it: puts the files in their
# places that every Debian package has, and compresses what is always compressed.
cmake_minimum_required(VERSION 3.25)
set(share ${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share)
set(doc ${share}/doc/${CPACK_PACKAGE_NAME})

file(RENAME ${doc}/CHANGELOG.md ${doc}/changelog)
configure_file(${CPACK_PACKAGE_DIRECTORY}/debian_changelog ${doc}/changelog.Debian COPYONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${doc}/copyright COPYONLY)
file(GLOB compressed ${share}/man/*/* ${doc}/changelog ${doc}/changelog.Debian)
execute_process(COMMAND gzip -9n ${compressed} COMMAND_ERROR_IS_FATAL ANY)

configure_file(${CMAKE_CURRENT_LIST_DIR}/lintian-overrides
  ${share}/lintian/overrides/${CPACK_PACKAGE_NAME} COPYONLY)
