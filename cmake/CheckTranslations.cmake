# Checks that a translation is complete and in step with the sources, run as
#   cmake -DLUPDATE=<lupdate> -DSOURCES=<src> -DTS=<korvane_xx.ts> -DWORK=<dir> -P CheckTranslations.cmake
# A copy of the .ts is brought up to date from the sources as tools/update-translations.sh would:
# every text must then have its translation, none may be left from a text the sources dropped,
# and all must sit in the one context the program looks them up in.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
get_filename_component(name "${TS}" NAME)
set(copy "${WORK}/${name}")
file(COPY_FILE "${TS}" "${copy}")
execute_process(COMMAND "${LUPDATE}" -silent -locations none "${SOURCES}" -ts "${copy}"
                RESULT_VARIABLE rc ERROR_VARIABLE errors)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "lupdate failed (${rc}):\n${errors}")
endif()

file(READ "${copy}" ts)
set(problems "")
string(REGEX MATCHALL "<source>[^<]*</source>[ \n]*<translation type=\"(unfinished|vanished|obsolete)\""
       faults "${ts}")
foreach(fault IN LISTS faults)
  string(REGEX REPLACE "<source>([^<]*)</source>[ \n]*<translation type=\"([a-z]+)\"" "\\2: \\1"
         fault "${fault}")
  list(APPEND problems "${fault}")
endforeach()
string(REGEX MATCHALL "<name>[^<]*</name>" contexts "${ts}")
foreach(context IN LISTS contexts)
  if(NOT context STREQUAL "<name>korvane</name>")
    list(APPEND problems "a text outside the context korvane: ${context}")
  endif()
endforeach()
if(problems)
  list(JOIN problems "\n  " problems)
  message(FATAL_ERROR "${name} is not in step with the sources (tools/update-translations.sh, "
                      "then translate):\n  ${problems}")
endif()
message(STATUS "${name}: every text translated")
