# Debian packages, one per component: `cpack` in the folder of a build that was configured with the prefix /usr, as the
# preset `packages` is.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tessarin)
set(CPACK_PACKAGE_VENDOR Tessarin)
set(CPACK_PACKAGE_CONTACT "The Tessarin developers <developers@tessarin.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Typed tables, configuration files and plain containers for games")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENTS_ALL library development)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libtessarin)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "The shared library that games and their tools load.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtessarin-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, and what CMake and pkg-config need to find the library.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)

if(TARGET tessarin_command)
    list(APPEND CPACK_COMPONENTS_ALL command)
    set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME tessarin)
    set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION utils)
    set(CPACK_COMPONENT_COMMAND_DESCRIPTION "The command that shows, changes and compiles files from a shell.")
    set(CPACK_COMPONENT_COMMAND_DEPENDS library)
endif()

include(CPack)
