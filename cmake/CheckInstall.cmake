# Installs the build into a fresh prefix and checks that every expected file arrived, run as
#   cmake -DBUILD_DIR=<build> -DPREFIX=<dir> -DEXPECTED=<a|b|...> [-DTOOL=bin/KorvaneCMD
#         -DVERSION=<x.y>] -P CheckInstall.cmake
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${PREFIX}")
unset(ENV{DESTDIR})
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${PREFIX}"
                RESULT_VARIABLE rc OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "cmake --install failed (${rc}):\n${output}")
endif()

string(REPLACE "|" ";" expected "${EXPECTED}")
set(missing "")
foreach(file IN LISTS expected)
  set(size 0)
  if(EXISTS "${PREFIX}/${file}" AND NOT IS_DIRECTORY "${PREFIX}/${file}")
    file(SIZE "${PREFIX}/${file}" size)
  endif()
  if(size EQUAL 0)
    list(APPEND missing "${file}")
  endif()
endforeach()
if(missing)
  list(JOIN missing "\n  " missing)
  message(FATAL_ERROR "not installed, or empty:\n  ${missing}\ninstall output:\n${output}")
endif()

# The installed tool runs from its new place, without the build tree.
if(DEFINED TOOL)
  execute_process(COMMAND "${PREFIX}/${TOOL}" --version
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT rc EQUAL 0 OR NOT out STREQUAL "KorvaneCMD ${VERSION}")
    message(FATAL_ERROR "installed KorvaneCMD --version: ${rc} \"${out}\"")
  endif()
endif()
list(LENGTH expected count)
message(STATUS "${count} files installed into ${PREFIX}")
