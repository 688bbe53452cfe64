# Headers that are the same on every target, from the host's packages: a folder with links to only these, because the
# host's own include folder would add the host's C library.

foreach(package IN ITEMS rapidjson)
    set(link ${CMAKE_BINARY_DIR}/headers/${package})
    if(EXISTS /usr/include/${package} AND NOT EXISTS ${link})
        file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers)
        file(CREATE_LINK /usr/include/${package} ${link} SYMBOLIC)
    endif()
endforeach()
set(rapidjson_headers ${CMAKE_BINARY_DIR}/headers CACHE PATH "RapidJSON, for this target")

# GoogleTest has no package for other targets; its sources are built together with the tests.
set(TESSARIN_GTEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest's sources")
