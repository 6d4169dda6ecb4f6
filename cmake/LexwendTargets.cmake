# SPDX-License-Identifier: MIT
# How every target of the project is made: one place for the language level, the warnings and the include root.

option(LEXWEND_WERROR "Treat warnings as errors" OFF)
set(LEXWEND_SANITIZE "" CACHE STRING "Sanitizers for every target, for example address,undefined")
option(LEXWEND_COVERAGE "Compile with gcov instrumentation" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
include(GNUInstallDirs)

# Line numbers are what a stack trace needs; the rest of the debug information doubles the time of a debug build.
set(CMAKE_CXX_FLAGS_DEBUG "-g1")
if("${LEXWEND_HOST}" STREQUAL "fake" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Takes the compiler no longer, and the tests of the conversion run three times as fast.
  string(APPEND CMAKE_CXX_FLAGS_DEBUG " -Og")
endif()

add_library(lexwend_flags INTERFACE)
target_include_directories(lexwend_flags INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(lexwend_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # g++ 12 sees overlapping copies in "literal" + std::string when it optimises (GCC bug 105329).
  target_compile_options(lexwend_flags INTERFACE -Wno-restrict)
endif()
if(LEXWEND_WERROR)
  target_compile_options(lexwend_flags INTERFACE -Werror)
endif()
if(LEXWEND_SANITIZE)
  target_compile_options(lexwend_flags INTERFACE "-fsanitize=${LEXWEND_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(lexwend_flags INTERFACE "-fsanitize=${LEXWEND_SANITIZE}")
endif()
if(LEXWEND_COVERAGE)
  target_compile_options(lexwend_flags INTERFACE --coverage -O0)
  target_link_options(lexwend_flags INTERFACE --coverage)
endif()

# GoogleTest is half of what the compiler reads for a test. The sources include it all the same, so that the build is the
# same without; and it is left out where ccache or another launcher keeps the objects, which knows nothing of these.
set(LEXWEND_TEST_PCH OFF)
if("${LEXWEND_HOST}" STREQUAL "fake" AND NOT APPLE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(LEXWEND_TEST_PCH ON)
  # With or without -pthread the predefined macros differ, and a precompiled header serves only those who have the same.
  target_compile_options(lexwend_flags INTERFACE -pthread)
endif()

# lexwend_precompile_tests(TARGET): GoogleTest and what goes with it are read once for all targets that say this.
function(lexwend_precompile_tests name)
  if(NOT LEXWEND_TEST_PCH)
    return()
  endif()
  if(NOT TARGET lexwend_test_headers)
    file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/precompiled_tests.cpp" CONTENT "")
    add_library(lexwend_test_headers OBJECT "${PROJECT_BINARY_DIR}/precompiled_tests.cpp")
    target_link_libraries(lexwend_test_headers PRIVATE lexwend_flags GTest::gmock)
    target_precompile_headers(lexwend_test_headers PRIVATE <algorithm> <chrono> <functional> <map> <memory> <optional>
      <string> <string_view> <utility> <vector> <gmock/gmock.h> <gtest/gtest.h>)
  endif()
  target_precompile_headers(${name} REUSE_FROM lexwend_test_headers)
endfunction()

# lexwend_library(NAME SOURCES a.cpp b.cpp [DEPS targets])
function(lexwend_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC lexwend_flags ${ARG_DEPS})
endfunction()

# lexwend_executable(NAME SOURCES main.cpp [DEPS targets])
function(lexwend_executable name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE lexwend_flags ${ARG_DEPS})
endfunction()

# lexwend_program(NAME SOURCES main.cpp [DEPS targets]): an executable that has the host of this build.
function(lexwend_program name)
  lexwend_executable(${name} ${ARGN})
  if(LEXWEND_HOST STREQUAL "linux")
    target_link_libraries(${name} PRIVATE lexwend_host_of_programs)
    set_target_properties(${name} PROPERTIES
      BUILD_RPATH "${PROJECT_BINARY_DIR}/platform/linux"
      INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}/lexwend")
  else()
    target_link_libraries(${name} PRIVATE lexwend_host_${LEXWEND_HOST})
  endif()
endfunction()

# lexwend_test(NAME SOURCES a_test.cpp [DEPS targets]): one GoogleTest program, each of its tests known to ctest.
function(lexwend_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE lexwend_flags ${ARG_DEPS} GTest::gmock GTest::gtest_main)
  lexwend_precompile_tests(${name})
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
