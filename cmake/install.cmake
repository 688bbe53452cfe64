# Headers, library, CMake package and pkg-config file, in two components: what a program needs to run, and to be built.

include(CMakePackageConfigHelpers)

install(TARGETS tessarin EXPORT tessarin-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tessarin DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT development FILES_MATCHING PATTERN "*.h")

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tessarin)
install(EXPORT tessarin-targets NAMESPACE tessarin:: FILE tessarin-config.cmake DESTINATION ${package_folder}
        COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tessarin-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tessarin-config-version.cmake DESTINATION ${package_folder}
        COMPONENT development)

# The file finds its prefix from its own location, so it is right for any prefix.
file(RELATIVE_PATH tessarin_prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/tessarin.pc.in ${PROJECT_BINARY_DIR}/tessarin.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tessarin.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
