include(CMakePackageConfigHelpers)

set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vekdb)
set(places
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
            NAMELINK_COMPONENT development)
install(TARGETS vekdb vekdb_allocation EXPORT vekdbTargets ${places})
if(TARGET vekdb_shared)
    install(TARGETS vekdb_shared ${places})
endif()
set(no_formats)
if(NOT TARGET vekdb_formats)
    set(no_formats PATTERN formats EXCLUDE)
endif()
install(DIRECTORY include/vekdb DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
        FILES_MATCHING PATTERN "*.h" ${no_formats})
install(FILES tools/gdb/vekdb_printers.py DESTINATION ${CMAKE_INSTALL_DATADIR}/vekdb/gdb
        COMPONENT development)
install(EXPORT vekdbTargets NAMESPACE vekdb:: DESTINATION ${config_folder}
        FILE vekdbTargets.cmake COMPONENT development)
# The formats are a component of the package, with libraries of their own behind them.
set(pkgconfig_files vekdb vekdb-core)
if(TARGET vekdb_formats)
    install(TARGETS vekdb_formats EXPORT vekdbFormatsTargets ${places})
    install(EXPORT vekdbFormatsTargets NAMESPACE vekdb:: DESTINATION ${config_folder}
            FILE vekdbFormatsTargets.cmake COMPONENT development)
    list(APPEND pkgconfig_files vekdb-formats)
endif()
configure_package_config_file(cmake/vekdbConfig.cmake.in vekdbConfig.cmake
        INSTALL_DESTINATION ${config_folder})
write_basic_package_version_file(vekdbConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vekdbConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vekdbConfigVersion.cmake
        DESTINATION ${config_folder} COMPONENT development)

# The files of pkg-config find their prefix from where they stand, so that a package or a copied
# tree needs no other ones.
set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(ABSOLUTE_PATH pkgconfig_folder BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
           OUTPUT_VARIABLE pkgconfig_place)
file(RELATIVE_PATH VEKDB_PC_PREFIX ${pkgconfig_place} ${CMAKE_INSTALL_PREFIX})
# Packagers may name folders outside of the prefix.
foreach(folder LIBDIR INCLUDEDIR)
    set(VEKDB_PC_${folder} ${CMAKE_INSTALL_${folder}})
    if(NOT IS_ABSOLUTE "${VEKDB_PC_${folder}}")
        set(VEKDB_PC_${folder} \${prefix}/${VEKDB_PC_${folder}})
    endif()
endforeach()
foreach(file IN LISTS pkgconfig_files)
    configure_file(cmake/${file}.pc.in ${file}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${file}.pc DESTINATION ${pkgconfig_folder}
            COMPONENT development)
endforeach()
