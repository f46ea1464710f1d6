# A build without tests, tool and installation makes the library, and no rule to install it.
file(REMOVE_RECURSE ${BINARY})
execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${BINARY} -G ${GENERATOR} -DVEKDB_INSTALL=OFF
            -DVEKDB_BUILD_TESTS=OFF -DVEKDB_BUILD_TOOLS=OFF
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
foreach(rules cmake_install.cmake CPackConfig.cmake)
    if(EXISTS ${BINARY}/${rules})
        file(STRINGS ${BINARY}/${rules} installs REGEX "file\\(INSTALL|CPACK_GENERATOR")
        if(installs)
            message(FATAL_ERROR "${rules} installs something: ${installs}")
        endif()
    endif()
endforeach()
