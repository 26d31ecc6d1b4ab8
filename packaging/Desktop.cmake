# What a desktop is told of the window: its entry, its description, its icons, its manual page.
configure_file(desktop/com.quorvane.Lumacheck.metainfo.xml.in com.quorvane.Lumacheck.metainfo.xml @ONLY)
install(FILES desktop/com.quorvane.Lumacheck.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/com.quorvane.Lumacheck.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

configure_file(man/Lumacheck.1.in pages/Lumacheck.1 @ONLY)
manual_page(Lumacheck.1)

# Of the window only the icon, which needs no more than Qt's drawing.
find_package(Qt6Svg QUIET)
if(TARGET Qt6::Svg)
  add_executable(lumacheck_icons icons/main.cpp ${PROJECT_SOURCE_DIR}/app/widgets/ApplicationIcon.cpp)
  target_include_directories(lumacheck_icons PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(lumacheck_icons PRIVATE lumacheck_options Qt6::Gui Qt6::Svg)
  set(draw ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen $<TARGET_FILE:lumacheck_icons>)
  foreach(side 16 22 24 32 48 64 128 256 512)
    page(icon-${side}.png
      DESTINATION icons/hicolor/${side}x${side}/apps RENAME com.quorvane.Lumacheck.png
      COMMAND ${draw} ${side} ${pages}/icon-${side}.png DEPENDS lumacheck_icons)
  endforeach()
  page(icon.svg DESTINATION icons/hicolor/scalable/apps RENAME com.quorvane.Lumacheck.svg
    COMMAND ${draw} 128 ${pages}/icon.svg DEPENDS lumacheck_icons)
else()
  message(WARNING "Qt SVG is missing: no icons are made for the desktop")
endif()
