# What an installation holds, and `make package`: a Debian package made with CPack.
# On macOS the application is a bundle (see src/app), installed as it is.
include(GNUInstallDirs)

install(TARGETS Cuebridge cuebridge-import
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  BUNDLE DESTINATION .)

if(NOT APPLE)
  set(dist ${PROJECT_SOURCE_DIR}/dist/linux)
  set(id com.quillfen.Cuebridge)
  install(FILES ${dist}/${id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${dist}/${id}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
  install(FILES ${dist}/${id}.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
  install(FILES ${PROJECT_SOURCE_DIR}/src/app/images/cuebridge.png
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/256x256/apps RENAME ${id}.png)
  install(FILES ${dist}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/cuebridge)

  # Debian keeps manual pages compressed, without a time stamp in the archive.
  add_custom_command(OUTPUT cuebridge-import.1.gz
    COMMAND gzip -9n -c ${dist}/cuebridge-import.1 > cuebridge-import.1.gz
    DEPENDS ${dist}/cuebridge-import.1 VERBATIM)
  add_custom_target(manual ALL DEPENDS cuebridge-import.1.gz)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cuebridge-import.1.gz
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME cuebridge)
set(CPACK_PACKAGE_VENDOR Quillfen)
set(CPACK_PACKAGE_CONTACT "Quillfen Support <support@quillfen.com>")
set(CPACK_PACKAGE_HOMEPAGE_URL https://www.quillfen.com/products)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "marker lists onto Final Cut Pro timelines")
set(CPACK_PACKAGE_DESCRIPTION
  "Cuebridge puts tab-separated marker lists (review notes, logged takes, music cues)
onto editing timelines at the right frame and in the right colour: into Final Cut
Pro 7 XML sequences, which Premiere Pro and Resolve also read, and into the clips
of Final Cut Pro X projects. cuebridge-import does the same from the command line.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
# Libraries from the programs themselves; what they start or load by name, by hand:
# the archiver of Gather Logs, the desktop's opener, the administrator prompt, and
# Qt's display plugins.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "zip, xdg-utils, pkexec | policykit-1, qt6-qpa-plugins")
include(CPack)
