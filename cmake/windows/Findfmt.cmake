include(${CMAKE_CURRENT_LIST_DIR}/header_only.cmake)
header_only(fmt::fmt fmt)
target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY=1)
