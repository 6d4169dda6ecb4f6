# SPDX-License-Identifier: MIT
# What the build does differently on macOS: where ICU comes from, and the application's bundle.

# Homebrew keeps its ICU out of the search path (macOS has one of its own, which is not for applications) and offers it
# for the machine's own processor. Linked statically, the bundle needs nothing that the user would have to install.
# To be included before find_package(ICU).
macro(lexwend_find_static_icu)
  # What an earlier run found is gone after an upgrade of Homebrew's.
  foreach(found ICU_INCLUDE_DIR ICU_UC_LIBRARY_RELEASE ICU_DATA_LIBRARY_RELEASE)
    if(DEFINED CACHE{${found}} AND NOT EXISTS "${${found}}")
      unset(${found} CACHE)
    endif()
  endforeach()
  if(NOT ICU_ROOT AND NOT DEFINED ENV{ICU_ROOT} AND NOT ICU_UC_LIBRARY_RELEASE)
    find_program(LEXWEND_BREW brew PATHS /opt/homebrew/bin /usr/local/bin)
    if(LEXWEND_BREW)
      execute_process(COMMAND "${LEXWEND_BREW}" --prefix icu4c OUTPUT_VARIABLE ICU_ROOT OUTPUT_STRIP_TRAILING_WHITESPACE)
    endif()
    if(NOT IS_DIRECTORY "${ICU_ROOT}")
      message(FATAL_ERROR "Homebrew has no ICU: run 'brew install icu4c', or name another with -DICU_ROOT=/path/to/icu")
    endif()
  endif()
  set(LEXWEND_LIBRARY_SUFFIXES ${CMAKE_FIND_LIBRARY_SUFFIXES})
  set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
  find_package(ICU REQUIRED COMPONENTS uc data)
  set(CMAKE_FIND_LIBRARY_SUFFIXES ${LEXWEND_LIBRARY_SUFFIXES})
  # An archive does not say what it needs in turn.
  set_property(TARGET ICU::uc APPEND PROPERTY INTERFACE_LINK_LIBRARIES ICU::data)
endmacro()

# lexwend_mac_bundle(TARGET): makes the program Lexwend.app, signed for this machine only. To be called in the directory
# that made the target.
function(lexwend_mac_bundle target)
  set(icon "${PROJECT_SOURCE_DIR}/packaging/mac/lexwend.icns")
  set(propertyList "${PROJECT_SOURCE_DIR}/packaging/mac/Info.plist.in")
  target_sources(${target} PRIVATE "${icon}")
  set_source_files_properties("${icon}" PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
  set_target_properties(${target} PROPERTIES
    MACOSX_BUNDLE ON
    OUTPUT_NAME Lexwend
    MACOSX_BUNDLE_INFO_PLIST "${propertyList}"
    MACOSX_BUNDLE_BUNDLE_NAME Lexwend
    MACOSX_BUNDLE_GUI_IDENTIFIER "${LEXWEND_IDENTIFIER}"
    MACOSX_BUNDLE_SHORT_VERSION_STRING "${PROJECT_VERSION}"
    MACOSX_BUNDLE_BUNDLE_VERSION "${PROJECT_VERSION}"
    MACOSX_BUNDLE_ICON_FILE lexwend.icns
    # The signature is made after linking and covers them too.
    LINK_DEPENDS "${icon};${propertyList}")
  set(LEXWEND_SIGNING_IDENTITY "-" CACHE STRING "The certificate that signs Lexwend.app; - signs ad hoc")
  find_program(LEXWEND_CODESIGN codesign)
  if(LEXWEND_CODESIGN)
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND "${LEXWEND_CODESIGN}" --force --sign "${LEXWEND_SIGNING_IDENTITY}" "$<TARGET_BUNDLE_DIR:${target}>"
      COMMENT "Signing Lexwend.app" VERBATIM)
  endif()
endfunction()
