# The target `reference` makes the reference of the public headers if doxygen is installed.

find_program(doxygen doxygen)
if(doxygen AND NOT TARGET reference)
    configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
    add_custom_target(reference COMMAND ${doxygen} ${PROJECT_BINARY_DIR}/Doxyfile VERBATIM)
endif()
