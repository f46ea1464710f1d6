# Packages for Debian: the shared library, what programs are built with, and the program.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR vekdb)
set(CPACK_PACKAGE_CONTACT "The vekdb maintainers <maintainers@vekdb.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_COMPONENTS_ALL library development)
if(TARGET vek)
    list(APPEND CPACK_COMPONENTS_ALL program)
endif()

function(vekdb_package component name section description)
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_COMPONENT_${key}_DESCRIPTION ${description} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_SHLIBDEPS ON PARENT_SCOPE)
endfunction()
set(runtime_package libvekdb${PROJECT_VERSION_MAJOR})
vekdb_package(library ${runtime_package} libs "The shared library that programs are linked with.")
vekdb_package(development libvekdb-dev libdevel
              "Headers, static libraries and descriptions of them for CMake and pkg-config.")
vekdb_package(program vek utils "Shows, checks, edits, joins and converts clip logs")
set(development_needs "${runtime_package} (= ${PROJECT_VERSION})")
if(TARGET vekdb_formats)
    string(REGEX REPLACE " *-l([a-z0-9]+)" ", lib\\1-dev" needs "${VEKDB_FORMATS_LINKS}")
    string(APPEND development_needs "${needs}")
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${development_needs}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)

# What each package says of itself; nothing that an installation without packages would have.
find_program(VEKDB_GZIP gzip)
set(package_folder ${CMAKE_CURRENT_BINARY_DIR}/package)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(CONFIGURE OUTPUT ${package_folder}/changelog @ONLY CONTENT
     "vekdb (@PROJECT_VERSION@) unstable; urgency=medium\n\n  * CHANGELOG.md of the sources says \
what changed.\n\n -- @CPACK_PACKAGE_CONTACT@  @date@\n")
if(VEKDB_GZIP)
    execute_process(COMMAND ${VEKDB_GZIP} -9nf ${package_folder}/changelog
                    COMMAND_ERROR_IS_FATAL ANY)
    foreach(component IN LISTS CPACK_COMPONENTS_ALL)
        string(TOUPPER ${component} key)
        install(FILES ${package_folder}/changelog.gz ${CMAKE_CURRENT_LIST_DIR}/copyright
                DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${key}_PACKAGE_NAME}
                COMPONENT ${component} EXCLUDE_FROM_ALL)
    endforeach()
endif()

# The system's list of shared libraries is made anew, and packages of programs that are linked with
# the library depend on it. What SQLite loads is no library for programs.
file(CONFIGURE OUTPUT ${package_folder}/triggers CONTENT "activate-noawait ldconfig\n")
file(CONFIGURE OUTPUT ${package_folder}/shlibs @ONLY CONTENT
     "libvekdb @PROJECT_VERSION_MAJOR@ @runtime_package@ (>= @PROJECT_VERSION@)\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${package_folder}/triggers ${package_folder}/shlibs)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/finish_packages.cmake)
include(CPack)
