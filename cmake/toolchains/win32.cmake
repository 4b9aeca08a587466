# 32-bit Windows by MinGW-w64; what is built runs under Wine. Header-only libraries are this machine's
# own: cmake/windows finds them. Doubles are computed by SSE2: CMakeLists.txt says so.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
# Its Wine is a 32-bit program.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../windows/wine32)
list(PREPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR}/../windows)
