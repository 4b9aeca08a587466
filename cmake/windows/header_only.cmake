# header_only(TARGET NAME): the target of a library that consists of headers, taken from this
# machine's own. Only that directory of theirs is shown: the others are a foreign system's.
function(header_only target name)
  if(NOT IS_DIRECTORY /usr/include/${name})
    message(FATAL_ERROR "/usr/include/${name} is missing: see packages.txt")
  endif()
  set(shown ${PROJECT_BINARY_DIR}/header_only/${name})
  file(MAKE_DIRECTORY ${shown})
  file(CREATE_LINK /usr/include/${name} ${shown}/${name} SYMBOLIC)
  if(NOT TARGET ${target})
    add_library(${target} INTERFACE IMPORTED)
    target_include_directories(${target} INTERFACE ${shown})
  endif()
endfunction()
