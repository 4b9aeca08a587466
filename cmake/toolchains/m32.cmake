# 32-bit x86 by this machine's own compiler. Doubles are computed by SSE2: CMakeLists.txt says so.
# The headers of the kernel interface are the 64-bit ones, which serve both.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_FLAGS_INIT "-m32 -idirafter /usr/include/x86_64-linux-gnu")
