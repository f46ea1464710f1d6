# The trigger does what the scripts would do that CPack puts into every package with something in
# /usr/lib: they are taken out again.
find_program(dpkg_deb dpkg-deb REQUIRED)
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(tree ${package}.tree)
    execute_process(COMMAND ${dpkg_deb} -R ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
    execute_process(COMMAND ${dpkg_deb} --root-owner-group -b ${tree} ${package}
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${tree})
endforeach()
