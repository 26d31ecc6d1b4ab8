# CPack takes the modules in lib/lumacheck for libraries that programs link, and adds a postinst that calls ldconfig. The
# linker does not look there: the package is packed again without it.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(tree ${CPACK_TEMPORARY_DIRECTORY}-repacked)
  file(REMOVE_RECURSE ${tree})
  execute_process(COMMAND dpkg-deb -R ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${tree}/DEBIAN/postinst)
  execute_process(COMMAND dpkg-deb --root-owner-group -Zxz -b ${tree} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${tree})
endforeach()
