# What `cmake --install` puts where, and the Debian package that CPack makes of it
# (`cpack -G DEB` in the build folder).
#
# The destinations are fixed, not GNUInstallDirs': the program finds its shipped data folder from
# its own folder (bin/../share/pxcallsigns/Norvane, see src/app/datafolder.cpp), so bin and share
# must stay side by side under one prefix. Nothing else about the prefix is built in.

install(TARGETS pxcallsigns RUNTIME DESTINATION bin)
# The station view's browser plugin, where the program looks for it beside bin/.
if(TARGET pxstationview)
  install(TARGETS pxstationview LIBRARY DESTINATION lib/pxcallsigns)
endif()

# The default data folder as the build made it at install time: the languages, the nicknames, the
# sample call-sign file, Help.txt and every map that is in Maps/ by then, with the empty folders.
install(DIRECTORY ${PX_DEFAULT_DATA} DESTINATION share/pxcallsigns)

set(PX_PACKAGING_DIR ${CMAKE_SOURCE_DIR}/packaging)
install(FILES ${PX_PACKAGING_DIR}/${PX_APP_ID}.desktop DESTINATION share/applications)
install(FILES ${PX_PACKAGING_DIR}/${PX_APP_ID}.metainfo.xml DESTINATION share/metainfo)

# The icon: the drawing itself, and the bitmap sizes of the hicolor theme rendered from it.
set(PX_ICON_SVG ${PX_PACKAGING_DIR}/${PX_APP_ID}.svg)
set(PX_ICON_SIZES 16 22 24 32 48 64 128 256)
set(PX_ICON_ROOT ${CMAKE_BINARY_DIR}/icons/hicolor)
install(FILES ${PX_ICON_SVG} DESTINATION share/icons/hicolor/scalable/apps)
find_program(PX_RSVG_CONVERT rsvg-convert)
if(PX_RSVG_CONVERT)
  set(pngs)
  foreach(size ${PX_ICON_SIZES})
    set(folder ${PX_ICON_ROOT}/${size}x${size}/apps)
    add_custom_command(OUTPUT ${folder}/${PX_APP_ID}.png
      COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
      COMMAND ${PX_RSVG_CONVERT} --width ${size} --height ${size} --output ${folder}/${PX_APP_ID}.png ${PX_ICON_SVG}
      DEPENDS ${PX_ICON_SVG}
      VERBATIM)
    list(APPEND pngs ${folder}/${PX_APP_ID}.png)
  endforeach()
  add_custom_target(icons ALL DEPENDS ${pngs} COMMENT "Icon sizes")
  install(DIRECTORY ${PX_ICON_ROOT}/ DESTINATION share/icons/hicolor)
else()
  message(WARNING "rsvg-convert (librsvg2-bin) not found: the icon is installed as SVG only")
endif()

# The Debian package: pxcallsigns_<version>_<arch>.deb. dpkg-shlibdeps finds the libraries the
# program links (Qt, gumbo, X11, XTest, ALSA); the rest is what it calls on at run time.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME pxcallsigns)
set(CPACK_PACKAGE_VENDOR "PX Callsigns")
set(CPACK_PACKAGE_CONTACT "PX Callsigns team <pxcallsigns@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "call-sign companion for SSTV picture exchange")
set(CPACK_PACKAGE_DESCRIPTION [[
PX Callsigns finds the station behind an amateur-radio call sign, typed or
taken from the clipboard, in its own call-sign file or on a call-book web
service, and shows name, address, country and where the station is.

It runs beside the SSTV program Pictaro and hands it a station's picture.]])
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION hamradio)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The help text opens in the desktop's viewer; the failure beep sounds through ALSA, which the
# program opens when it first beeps; Pictaro, a Windows program, runs under Wine.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils, libasound2")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "wine")
include(CPack)
