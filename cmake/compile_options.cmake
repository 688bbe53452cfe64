# How our own targets are compiled and linked.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_EXTENSIONS OFF)

# The 387 keeps floats wider than they are and rounds twice; values must be the same on every target.
set(float_options)
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "86")
    set(float_options -msse2 -mfpmath=sse)
endif()

function(tessarin_compile_options target)
    target_compile_options(${target} PRIVATE ${float_options})
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Werror)
    set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
                                               C_VISIBILITY_PRESET hidden)
    if(TESSARIN_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${TESSARIN_SANITIZE} -fno-sanitize-recover=all
                                                 -fno-omit-frame-pointer)
        if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
            target_compile_options(
                ${target} PRIVATE -fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitizer_ignore.txt)
        endif()
        target_link_options(${target} PUBLIC -fsanitize=${TESSARIN_SANITIZE})
    endif()
endfunction()

# Calls inside the library bind inside it: a host may have its own functions called Clear, Set or Empty, and the library
# must not call those. The version script hides what visibility can't hide: the standard library's headers mark
# instantiations of their templates as visible.
function(tessarin_link_options target)
    if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
        set(script ${PROJECT_SOURCE_DIR}/cmake/exports.map)
        target_link_options(${target} PRIVATE -Wl,-Bsymbolic -Wl,--exclude-libs,ALL -Wl,--version-script,${script})
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
    endif()
    if(NOT TESSARIN_SANITIZE AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
        target_link_options(${target} PRIVATE -Wl,-z,defs)
    endif()
    # A host on Windows gets one file, which contains the compiler's libraries: they aren't on the path there.
    if(MINGW)
        target_link_options(${target} PRIVATE -static)
    endif()
endfunction()
