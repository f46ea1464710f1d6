# The interpreter that the Python module is built for: the one that is named by
# Python_EXECUTABLE, else the system's, whose headers and pybind11 the system's packages have,
# else the first on the path. Without headers or pybind11 there is no module.
function(vekdb_has_headers python answer)
    execute_process(
        COMMAND ${python} -c "import os, sysconfig; print(os.path.isfile(os.path.join(\
sysconfig.get_paths()['include'], 'Python.h')))"
        OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    set(${answer} ${found} PARENT_SCOPE)
endfunction()

function(vekdb_find_python)
    if(NOT Python_EXECUTABLE)
        find_program(path_python NAMES python3 NO_CACHE)
        foreach(python /usr/bin/python3 ${path_python})
            if(EXISTS ${python})
                vekdb_has_headers(${python} has_headers)
                if(has_headers)
                    set(Python_EXECUTABLE ${python} CACHE FILEPATH
                        "The interpreter that the Python module is built for")
                    break()
                endif()
            endif()
        endforeach()
    endif()
endfunction()

vekdb_find_python()
if(Python_EXECUTABLE)
    find_package(Python 3.8 QUIET COMPONENTS Interpreter Development.Module)
    if(Python_FOUND)
        find_package(pybind11 2.9 QUIET CONFIG)
    endif()
endif()
