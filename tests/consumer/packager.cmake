# A distribution builds with flags and folders of its own: none of its flags is said twice, its
# warnings are no errors, and the files of pkg-config name the folders as they are.
cmake_minimum_required(VERSION 3.22)
file(REMOVE_RECURSE ${BINARY})
set(flags "-O2 -D_FORTIFY_SOURCE=3 -fstack-protector-all")
execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${BINARY} -G ${GENERATOR} -DCMAKE_BUILD_TYPE=Release
            -DCMAKE_CXX_FLAGS=${flags} -DVEKDB_WERROR=OFF -DVEKDB_HARDEN=ON
            -DVEKDB_BUILD_TESTS=OFF -DVEKDB_BUILD_TOOLS=OFF -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
            -DCMAKE_INSTALL_LIBDIR=/opt/lib64 -DCMAKE_INSTALL_INCLUDEDIR=/opt/headers
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(READ ${BINARY}/compile_commands.json commands)
foreach(ours _FORTIFY_SOURCE=2 -fstack-protector-strong -Werror)
    string(FIND "${commands}" "${ours}" at)
    if(NOT at EQUAL -1)
        message(FATAL_ERROR "${ours} was added to ${flags}")
    endif()
endforeach()
foreach(line "libdir=/opt/lib64" "includedir=/opt/headers")
    file(STRINGS ${BINARY}/vekdb-core.pc lines REGEX "^${line}$")
    if(NOT lines)
        message(FATAL_ERROR "vekdb-core.pc does not say ${line}")
    endif()
endforeach()
