# 64-bit ARM, cross-compiled; what is built runs under user-mode emulation. Libraries that consist
# of headers only are this machine's own, found behind all headers of the foreign system.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CXX_FLAGS_INIT "-idirafter /usr/include")
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-aarch64;-L;/usr/aarch64-linux-gnu")
