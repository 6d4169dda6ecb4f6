# SPDX-License-Identifier: MIT
# cmake --install build/release --prefix ~/.local: the programs, the entry of the applications menu and its icon, and the
# folder of the log, which the agent never makes itself.
include(GNUInstallDirs)
install(TARGETS lexwend lexwend-convert RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(FILES packaging/linux/org.lexwend.Lexwend.desktop DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
install(FILES packaging/icons/org.lexwend.Lexwend.svg
  DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}")
# A package is built for nobody in particular, so it makes no folder in a home.
install(CODE [[
  if(NOT DEFINED ENV{DESTDIR} AND DEFINED ENV{HOME})
    file(MAKE_DIRECTORY "$ENV{HOME}/Library/Logs")
  endif()
]])
