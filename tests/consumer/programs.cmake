# The programs of a consumer, whatever way it came to the library.
add_executable(consumer ../consumer.cpp)
target_link_libraries(consumer PRIVATE vekdb::vekdb)

if(TARGET vekdb::formats)
    add_executable(formats_consumer ../formats_consumer.cpp)
    target_compile_options(formats_consumer PRIVATE -fno-exceptions -fno-rtti)
    target_link_libraries(formats_consumer PRIVATE vekdb::formats)
endif()

add_executable(own_operators ../own_operators.cpp)
set_target_properties(own_operators PROPERTIES VEKDB_OWN_ALLOCATOR ON)
target_link_libraries(own_operators PRIVATE vekdb::vekdb)

get_target_property(form vekdb::vekdb TYPE)
if(form STREQUAL SHARED_LIBRARY)
    add_executable(own_names ../own_names.cpp)
    target_link_libraries(own_names PRIVATE vekdb::vekdb)
endif()

if(UNIX)
    add_executable(plugin_host ../plugin_host.cpp)
    target_link_libraries(plugin_host PRIVATE ${CMAKE_DL_LIBS})
    foreach(plugin plugin_hiding plugin_showing)
        add_library(${plugin} MODULE ../plugin.cpp)
        set_target_properties(${plugin} PROPERTIES PREFIX "" SUFFIX "")
        target_link_libraries(${plugin} PRIVATE vekdb::vekdb)
    endforeach()
    target_link_options(plugin_hiding PRIVATE
        "LINKER:--version-script,${CMAKE_CURRENT_LIST_DIR}/plugin.map")
endif()
