# SPDX-License-Identifier: MIT
# cmake --install build/release --prefix ~/.local: the programs, the entry of the applications menu and its icon, and the
# folder of the log, which the agent never makes itself.
install(TARGETS lexwend lexwend-convert lexwend-doctor RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS lexwend_host_module lexwend-clipboard DESTINATION "${CMAKE_INSTALL_LIBDIR}/lexwend")
# With the program's whole path, which is known when it is installed: the folder may not be in the PATH of the desktop.
install(CODE "set(source \"${CMAKE_CURRENT_SOURCE_DIR}/packaging/linux\")
  set(build \"${CMAKE_CURRENT_BINARY_DIR}\")
  get_filename_component(LEXWEND_PROGRAM \"${CMAKE_INSTALL_BINDIR}/lexwend\" ABSOLUTE BASE_DIR \"\${CMAKE_INSTALL_PREFIX}\")")
# KWin compares the command with the program's path, so it has quotes only where the path needs them.
install(CODE [[
  set(LEXWEND_COMMAND "${LEXWEND_PROGRAM}")
  if(NOT LEXWEND_PROGRAM MATCHES "^[A-Za-z0-9/._+-]+$")
    set(LEXWEND_COMMAND "\"${LEXWEND_PROGRAM}\"")
  endif()
  configure_file("${source}/org.lexwend.Lexwend.desktop.in" "${build}/org.lexwend.Lexwend.desktop" @ONLY)
]])
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/org.lexwend.Lexwend.desktop"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
# GNOME Shell lists it for every user; each switches it on.
install(FILES packaging/gnome-extension/extension.js packaging/gnome-extension/metadata.json
  DESTINATION "${CMAKE_INSTALL_DATADIR}/gnome-shell/extensions/lexwend@lexwend.org")
install(FILES packaging/linux/lexwend.conf DESTINATION "${CMAKE_INSTALL_DATADIR}/user-tmpfiles.d")
install(FILES packaging/icons/org.lexwend.Lexwend.svg
  DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
foreach(state "" -waiting -done -failed)
  list(APPEND symbolic_icons "packaging/icons/org.lexwend.Lexwend${state}-symbolic.svg")
endforeach()
install(FILES ${symbolic_icons}
  DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/symbolic/apps")
set(LEXWEND_RELEASE_DATE "" CACHE STRING "The day of the release in the metainfo file, YYYY-MM-DD; today where it is empty")
if(NOT LEXWEND_RELEASE_DATE)
  string(TIMESTAMP today "%Y-%m-%d" UTC)
  set(LEXWEND_RELEASE_DATE "${today}")
endif()
configure_file(packaging/linux/org.lexwend.Lexwend.metainfo.xml.in org.lexwend.Lexwend.metainfo.xml @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/org.lexwend.Lexwend.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
foreach(program lexwend lexwend-convert lexwend-doctor)
  install(FILES packaging/man/${program}.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
  install(FILES packaging/completions/${program}.bash
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME ${program})
  install(FILES packaging/completions/_${program} DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions")
  install(FILES packaging/completions/${program}.fish DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
endforeach()
# As they stand in the tree, so that their links and pictures are found.
install(FILES README.md README.he.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(FILES docs/using.md docs/applications.md docs/editors.md docs/privacy.md DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
install(DIRECTORY docs/he docs/pictures DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
# A package of Debian says its licence in a file of its own.
if(NOT DEFINED ENV{DEB_BUILD_ARCH})
  install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}")
endif()
# A package is built for nobody in particular, so it makes no folder in a home: there lexwend.conf asks for one at login.
install(CODE [[
  if(NOT DEFINED ENV{DESTDIR} AND DEFINED ENV{HOME})
    file(MAKE_DIRECTORY "$ENV{HOME}/Library/Logs")
  endif()
]])

# cmake --build build/release --target uninstall: takes out what the last installation put in.
add_custom_target(uninstall COMMAND "${CMAKE_COMMAND}" -P "${CMAKE_CURRENT_SOURCE_DIR}/cmake/Uninstall.cmake" VERBATIM)
