include(CMakePackageConfigHelpers)

install(TARGETS vekdb EXPORT vekdbTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/vekdb DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
install(EXPORT vekdbTargets NAMESPACE vekdb:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vekdb
        FILE vekdbTargets.cmake)
configure_package_config_file(cmake/vekdbConfig.cmake.in vekdbConfig.cmake
        INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vekdb)
write_basic_package_version_file(vekdbConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vekdbConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vekdbConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vekdb)
