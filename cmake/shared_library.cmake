# What a shared library shows: the names marked VEKDB_PUBLIC and nothing of the standard library's
# that was compiled into it. Its own calls stay inside, whatever an application calls its functions.
set(VEKDB_EXPORTS ${CMAKE_CURRENT_LIST_DIR}/exports.map)
function(vekdb_shared_library target)
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} OUTPUT_NAME vekdb)
    if(UNIX AND NOT APPLE)
        target_link_options(${target} PRIVATE
            "LINKER:-Bsymbolic-functions" "LINKER:--version-script,${VEKDB_EXPORTS}")
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${VEKDB_EXPORTS})
    endif()
endfunction()
