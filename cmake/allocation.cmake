# The global allocation operators, which take what a program asks `new` for from the host's
# allocator. They come with the library unless VEKDB_ALLOCATION is off, or a target of the
# application has the property VEKDB_OWN_ALLOCATOR. All of them stand in one file, so that no
# program ever gets half of the set; always static, so that they are the program's own.
option(VEKDB_ALLOCATION "Programs that use the library get its allocation operators" ON)

add_library(vekdb_allocation STATIC src/support/allocation_operators.cpp)
add_library(vekdb::allocation ALIAS vekdb_allocation)
set_target_properties(vekdb_allocation PROPERTIES
    EXPORT_NAME allocation POSITION_INDEPENDENT_CODE ON)
target_link_libraries(vekdb_allocation PUBLIC vekdb)
vekdb_private_flags(vekdb_allocation)
vekdb_hardened(vekdb_allocation)

# Every program gets the set, also where another library that defines some of it comes first on
# the link line. A plug-in that has the library inside asks its own operators before those of the
# process that loads it; what a shared library asks is the process's matter.
target_link_options(vekdb_allocation INTERFACE "LINKER:-u,vekdb_allocation_operators")
if(UNIX AND NOT APPLE AND NOT BUILD_SHARED_LIBS)
    set(is_plugin $<IN_LIST:$<TARGET_PROPERTY:TYPE>,MODULE_LIBRARY$<SEMICOLON>SHARED_LIBRARY>)
    target_link_options(vekdb_allocation INTERFACE $<${is_plugin}:LINKER:-Bsymbolic-functions>)
endif()

if(VEKDB_ALLOCATION)
    set(has_own $<BOOL:$<TARGET_PROPERTY:VEKDB_OWN_ALLOCATOR>>)
    target_link_libraries(vekdb INTERFACE $<$<NOT:${has_own}>:$<TARGET_NAME:vekdb_allocation>>)
endif()
