# Windows on x86-64. Programs run under Wine, which looks for libraries in its own PATH; run_in_wine puts the compiler's
# runtime library there. Tests whose heap is wrapped must not contain that library, because it would be wrapped too.

set(CMAKE_SYSTEM_PROCESSOR x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/run_in_wine ${CMAKE_BINARY_DIR})
