# SPDX-License-Identifier: MIT
# Builds for macOS 13 on Debian with clang 14 and lld, against our own declarations and stub libraries. The product is
# a check: the C library's headers are not Darwin's, so it must never be run or handed out.
#   -DLEXWEND_MAC_ARCHITECTURE=arm64|x86_64   -DLEXWEND_MAC_SYSROOT=FOLDER as make_bundle.py lays it out
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES LEXWEND_MAC_ARCHITECTURE LEXWEND_MAC_SYSROOT)
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${LEXWEND_MAC_ARCHITECTURE})
set(CMAKE_OSX_ARCHITECTURES ${LEXWEND_MAC_ARCHITECTURE})
set(CMAKE_OSX_DEPLOYMENT_TARGET 13.0)
set(CMAKE_OSX_SYSROOT "${LEXWEND_MAC_SYSROOT}")
set(CMAKE_C_COMPILER /usr/bin/clang-14)
set(CMAKE_CXX_COMPILER /usr/bin/clang++-14)
set(CMAKE_OBJCXX_COMPILER /usr/bin/clang++-14)
foreach(language C CXX OBJCXX)
  set(CMAKE_${language}_COMPILER_TARGET ${LEXWEND_MAC_ARCHITECTURE}-apple-macos13)
endforeach()
set(CMAKE_AR llvm-ar-14 CACHE FILEPATH "")
set(CMAKE_RANLIB llvm-ranlib-14 CACHE FILEPATH "")
set(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-14 CACHE FILEPATH "")
set(CMAKE_OTOOL llvm-otool-14 CACHE FILEPATH "")
# A trial program would need a macOS to run on.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(includes "-nostdlibinc -isystem ${LEXWEND_MAC_SYSROOT}/shim")
set(cIncludes "-isystem ${LEXWEND_MAC_SYSROOT}/usr/include -isystem /usr/include/x86_64-linux-musl -D_GNU_SOURCE")
set(frameworks "-iframework ${LEXWEND_MAC_SYSROOT}/System/Library/Frameworks")
set(CMAKE_C_FLAGS_INIT "${includes} ${cIncludes}")
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ ${includes} -isystem /usr/lib/llvm-14/include/c++/v1 ${cIncludes} ${frameworks}")
set(CMAKE_OBJCXX_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT}")
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-fuse-ld=/usr/bin/ld64.lld-14 -mlinker-version=609 -stdlib=libc++ -Wl,-adhoc_codesign -Wl,--error-limit=0")
# Highway is a package of this machine's processor and C library, of no use to another one's programs.
set(LEXWEND_VECTORS OFF CACHE BOOL "")
set(ICU_INCLUDE_DIR "${LEXWEND_MAC_SYSROOT}/icu/include" CACHE PATH "")
foreach(library UC DATA)
  string(TOLOWER ${library} name)
  set(ICU_${library}_LIBRARY_RELEASE "${LEXWEND_MAC_SYSROOT}/icu/lib/libicu${name}.tbd" CACHE FILEPATH "")
endforeach()
