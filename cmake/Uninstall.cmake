# SPDX-License-Identifier: MIT
# Removes the files that install_manifest.txt names; to be run in the build folder.
if(NOT EXISTS install_manifest.txt)
  message(FATAL_ERROR "nothing was installed from this build: there is no install_manifest.txt")
endif()
file(STRINGS install_manifest.txt files)
foreach(file IN LISTS files)
  file(REMOVE "$ENV{DESTDIR}${file}")
  if(EXISTS "$ENV{DESTDIR}${file}")
    message(SEND_ERROR "${file} could not be removed")
  endif()
endforeach()
