# Every header compiles as the first and only one of a file: public ones by the name that
# applications write and under the warnings that applications may have turned on, the library's own
# by theirs.
function(vekdb_headers_alone folder target)
    file(GLOB_RECURSE headers RELATIVE ${PROJECT_SOURCE_DIR}/${folder} CONFIGURE_DEPENDS
         ${PROJECT_SOURCE_DIR}/${folder}/*.h)
    set(sources)
    foreach(header IN LISTS headers)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/headers_alone/${folder}/${header}.cpp)
        file(CONFIGURE OUTPUT ${source}
             CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
        list(APPEND sources ${source})
    endforeach()
    add_library(${target} OBJECT ${sources})
    target_link_libraries(${target} PRIVATE vekdb)
    vekdb_private_flags(${target})
endfunction()
vekdb_headers_alone(include headers_alone)
target_compile_options(headers_alone PRIVATE
    -Wnon-virtual-dtor -Woverloaded-virtual -Wshadow -Wold-style-cast -Wcast-align -Wconversion
    -Wsign-conversion)
vekdb_headers_alone(src own_headers_alone)
target_include_directories(own_headers_alone PRIVATE ${PROJECT_SOURCE_DIR}/src)
