# Linux with 32-bit pointers, by the multilib compiler of a 64-bit host, which also runs what it builds.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
# The kernel's headers are where the host has them: the package that links them in conflicts with other cross compilers.
set(CMAKE_C_FLAGS_INIT "-m32 -idirafter /usr/include/x86_64-linux-gnu")
set(CMAKE_CXX_FLAGS_INIT ${CMAKE_C_FLAGS_INIT})
include(${CMAKE_CURRENT_LIST_DIR}/headers_only.cmake)
