# SPDX-License-Identifier: MIT
# cmake --install build/release --prefix ~/.local: the programs, the entry of the applications menu and its icon, and the
# folder of the log, which the agent never makes itself.
install(TARGETS lexwend lexwend-convert RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS lexwend_host_module LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/lexwend")
# With the program's whole path, which is known when it is installed: the folder may not be in the PATH of the desktop.
install(CODE "set(source \"${CMAKE_CURRENT_SOURCE_DIR}/packaging/linux\")
  set(build \"${CMAKE_CURRENT_BINARY_DIR}\")
  get_filename_component(LEXWEND_PROGRAM \"${CMAKE_INSTALL_BINDIR}/lexwend\" ABSOLUTE BASE_DIR \"\${CMAKE_INSTALL_PREFIX}\")")
install(CODE [[
  configure_file("${source}/org.lexwend.Lexwend.desktop.in" "${build}/org.lexwend.Lexwend.desktop" @ONLY)
]])
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/org.lexwend.Lexwend.desktop"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
install(FILES packaging/linux/lexwend.conf DESTINATION "${CMAKE_INSTALL_DATADIR}/user-tmpfiles.d")
install(FILES packaging/icons/org.lexwend.Lexwend.svg
  DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}")
# A package is built for nobody in particular, so it makes no folder in a home: there lexwend.conf asks for one at login.
install(CODE [[
  if(NOT DEFINED ENV{DESTDIR} AND DEFINED ENV{HOME})
    file(MAKE_DIRECTORY "$ENV{HOME}/Library/Logs")
  endif()
]])
