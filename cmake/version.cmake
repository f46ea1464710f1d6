# The version stands in one header; its first three numbers are the project's.
set(version_header ${CMAKE_CURRENT_LIST_DIR}/../include/vekdb/support/version.h)
file(STRINGS ${version_header} version_line REGEX "kVekdbVersion\\[\\]")
string(REGEX MATCH "[0-9]+\\.[0-9]+\\.[0-9]+" VEKDB_VERSION "${version_line}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${version_header})
