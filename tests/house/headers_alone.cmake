# Every header compiles as the first and only one of a file.
set(alone_sources)
foreach(floor IN LISTS VEKDB_FLOORS)
    file(GLOB headers RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
         ${PROJECT_SOURCE_DIR}/${floor}/*.h)
    foreach(header IN LISTS headers)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/headers_alone/${header}.cpp)
        file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
        list(APPEND alone_sources ${source})
    endforeach()
endforeach()
add_library(headers_alone OBJECT ${alone_sources})
target_link_libraries(headers_alone PRIVATE vekdb)
vekdb_private_flags(headers_alone)
