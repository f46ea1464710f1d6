# Every header compiles as the first and only one of a file: public ones by the name that
# applications write, the library's own by theirs.
set(alone_sources)
function(vekdb_headers_alone folder)
    file(GLOB_RECURSE headers RELATIVE ${PROJECT_SOURCE_DIR}/${folder} CONFIGURE_DEPENDS
         ${PROJECT_SOURCE_DIR}/${folder}/*.h)
    foreach(header IN LISTS headers)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/headers_alone/${folder}/${header}.cpp)
        file(CONFIGURE OUTPUT ${source}
             CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
        list(APPEND alone_sources ${source})
    endforeach()
    set(alone_sources ${alone_sources} PARENT_SCOPE)
endfunction()
vekdb_headers_alone(include)
vekdb_headers_alone(src)
add_library(headers_alone OBJECT ${alone_sources})
target_link_libraries(headers_alone PRIVATE vekdb)
target_include_directories(headers_alone PRIVATE ${PROJECT_SOURCE_DIR}/src)
vekdb_private_flags(headers_alone)
