# Headers, library, CMake package and pkg-config file.

include(CMakePackageConfigHelpers)

install(TARGETS tessarin EXPORT tessarin-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tessarin DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tessarin)
install(EXPORT tessarin-targets NAMESPACE tessarin:: FILE tessarin-config.cmake DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tessarin-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tessarin-config-version.cmake DESTINATION ${package_folder})

# The file finds its prefix from where it lies, so that an install to any prefix is right.
file(RELATIVE_PATH tessarin_prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/tessarin.pc.in ${PROJECT_BINARY_DIR}/tessarin.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tessarin.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
