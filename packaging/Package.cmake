# The Debian package, by CPack. `tools/package` makes it.
add_custom_command(OUTPUT ${pages}/changelog.gz
  COMMAND sh -c "gzip -9nc '${LUMACHECK_CHANGELOG}' >'${pages}/changelog.gz'" DEPENDS ${LUMACHECK_CHANGELOG} VERBATIM)
set_property(GLOBAL APPEND PROPERTY LUMACHECK_PAGES ${pages}/changelog.gz)
install(FILES ${pages}/changelog.gz debian/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/lumacheck
  COMPONENT package EXCLUDE_FROM_ALL)

# Logs of the whole machine, such as the superuser's, lie where logs lie; the machine's Library leads there.
install(DIRECTORY DESTINATION /var/log/quorvane/Quorvane COMPONENT package EXCLUDE_FROM_ALL)
install(CODE [[
  set(library "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/quorvane")
  file(MAKE_DIRECTORY "${library}")
  file(CREATE_LINK /var/log/quorvane "${library}/Logs" SYMBOLIC)
]] COMPONENT package EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_INSTALL_CMAKE_PROJECTS
  ${PROJECT_BINARY_DIR};${PROJECT_NAME};Unspecified;/ ${PROJECT_BINARY_DIR};${PROJECT_NAME};package;/)
set(CPACK_PACKAGE_NAME lumacheck)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Quorvane <maintainers@quorvane.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "find gamma shifts between a movie and its source")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION [[
An export of a movie can come out lighter or darker than its source. Lumacheck
compares one frame of both and their color metadata, and tells whether such a
gamma shift lies in the pixels, in the metadata or in both.

It can copy the color metadata of the source onto the export, and saves it in
place or as a self-contained copy. It reads QuickTime and MPEG-4 movies.

This package holds the window, Lumacheck, and the command, lumacheck, which
prints JSON for scripts.]])
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://${LUMACHECK_WEB_HOST}/vextrel/)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Beyond what the libraries ask for: archives of logs, opening pages and the manual, administrator rights, checked servers,
# the network's interfaces, Qt's own texts in other languages; and what shows a window where there is no X11.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "ca-certificates, iproute2, libarchive-tools, pkexec, polkitd, qt6-qpa-plugins, qt6-translations-l10n, qt6-wayland, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS sudo)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_STRIP_FILES ON)
set(CPACK_SET_DESTDIR ON)  # for what does not lie under the prefix
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/WithoutPostinst.cmake)
include(CPack)
