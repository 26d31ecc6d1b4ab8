# What a desktop is told of the window: its entry, its description, its icons, its manual page.
configure_file(desktop/com.quorvane.Lumacheck.metainfo.xml.in com.quorvane.Lumacheck.metainfo.xml @ONLY)
install(FILES desktop/com.quorvane.Lumacheck.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/com.quorvane.Lumacheck.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

configure_file(man/Lumacheck.1.in pages/Lumacheck.1 @ONLY)
manual_page(Lumacheck.1)

# Of the window only the icon, which needs no more than Qt's drawing.
add_executable(lumacheck_icons icons/main.cpp ${PROJECT_SOURCE_DIR}/app/ApplicationIcon.cpp)
target_include_directories(lumacheck_icons PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(lumacheck_icons PRIVATE lumacheck_options Qt6::Gui)
foreach(side 16 22 24 32 48 64 128 256 512)
  page(icon-${side}.png
    DESTINATION icons/hicolor/${side}x${side}/apps RENAME com.quorvane.Lumacheck.png
    COMMAND lumacheck_icons ${side} ${pages}/icon-${side}.png DEPENDS lumacheck_icons)
endforeach()
