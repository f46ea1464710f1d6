# The list of what the test programs are built from, for the test that looks for lost files.
get_property(sources GLOBAL PROPERTY VEKDB_TEST_SOURCES)
set(list "")
foreach(source IN LISTS sources)
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    cmake_path(RELATIVE_PATH source BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
    string(APPEND list "${source}\n")
endforeach()
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/test_sources.txt CONTENT "${list}" @ONLY)
