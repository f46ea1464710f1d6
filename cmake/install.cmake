include(CMakePackageConfigHelpers)

install(TARGETS vekdb EXPORT vekdbTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(floor IN LISTS VEKDB_FLOORS)
    install(DIRECTORY ${floor}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vekdb/${floor}
            FILES_MATCHING PATTERN "*.h" PATTERN "*_impl.h" EXCLUDE)
endforeach()
install(EXPORT vekdbTargets NAMESPACE vekdb:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vekdb
        FILE vekdbTargets.cmake)
configure_package_config_file(cmake/vekdbConfig.cmake.in vekdbConfig.cmake
        INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vekdb)
write_basic_package_version_file(vekdbConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vekdbConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vekdbConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vekdb)
