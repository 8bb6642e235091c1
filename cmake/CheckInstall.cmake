# Installs the build as a packager does, into a staging folder, and checks that exactly the
# expected files arrived, run as
#   cmake -DBUILD_DIR=<build> -DSTAGE=<dir> -DPREFIX=<install prefix> -DEXPECTED=<a|b|...>
#         [-DTOOL=bin/KorvaneCMD -DVERSION=<x.y>] -P CheckInstall.cmake
# EXPECTED lists the files relative to the prefix.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${STAGE}")
set(ENV{DESTDIR} "${STAGE}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}"
                RESULT_VARIABLE rc OUTPUT_VARIABLE output ERROR_VARIABLE output)
unset(ENV{DESTDIR})
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "DESTDIR=${STAGE} cmake --install failed (${rc}):\n${output}")
endif()

set(root "${STAGE}${PREFIX}")
string(REPLACE "|" ";" expected "${EXPECTED}")
set(missing "")
foreach(file IN LISTS expected)
  set(size 0)
  if(EXISTS "${root}/${file}" AND NOT IS_DIRECTORY "${root}/${file}")
    file(SIZE "${root}/${file}" size)
  endif()
  if(size EQUAL 0)
    list(APPEND missing "${file}")
  endif()
endforeach()
# Anything else in the stage is a file nobody listed, or one written outside the prefix.
file(GLOB_RECURSE staged LIST_DIRECTORIES false RELATIVE "${STAGE}" "${STAGE}/*")
set(unexpected "")
foreach(file IN LISTS staged)
  string(PREPEND file "/")
  string(LENGTH "${PREFIX}/" length)
  string(SUBSTRING "${file}" 0 ${length} head)
  string(SUBSTRING "${file}" ${length} -1 relative)
  if(NOT head STREQUAL "${PREFIX}/" OR NOT relative IN_LIST expected)
    list(APPEND unexpected "${file}")
  endif()
endforeach()
if(missing OR unexpected)
  list(JOIN missing "\n  " missing)
  list(JOIN unexpected "\n  " unexpected)
  message(FATAL_ERROR "not installed, or empty:\n  ${missing}\n"
                      "installed but not expected:\n  ${unexpected}\ninstall output:\n${output}")
endif()

# The installed tool runs from its new place, without the build tree.
if(DEFINED TOOL)
  execute_process(COMMAND "${root}/${TOOL}" --version
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT rc EQUAL 0 OR NOT out STREQUAL "KorvaneCMD ${VERSION}")
    message(FATAL_ERROR "installed KorvaneCMD --version: ${rc} \"${out}\"")
  endif()
endif()
list(LENGTH expected count)
message(STATUS "${count} files installed into ${root}")
