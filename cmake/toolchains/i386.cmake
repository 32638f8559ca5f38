# 32-bit x86: the same widths as the panel, run natively.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(VELK_MACHINE i386)
set(velk_compiler_root /usr/i686-linux-gnu)
include("${CMAKE_CURRENT_LIST_DIR}/libraries.cmake")
# The loader of that C library; it also finds the shared C++ library there.
set(CMAKE_CROSSCOMPILING_EMULATOR
    ${velk_run_root}/lib/ld-linux.so.2;--library-path;${velk_run_root}/lib:${velk_run_root}/lib/i386-linux-gnu)
