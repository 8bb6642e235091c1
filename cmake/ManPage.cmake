# Writes a man page from a program's --help and --version, run as
#   cmake -DPROGRAM=<exe> -DOUTPUT=<file.1> -DSUMMARY=<one line> -DWORK_DIR=<dir> -P ManPage.cmake
# The help text's layout is the source: "Usage:" lines make the synopsis, a line ending in ":" or
# starting "Label: " a section, "  term  text" an item, lines starting with the program's name
# (after the indent) an example kept as it stands, anything else a filled paragraph.
cmake_minimum_required(VERSION 3.25)

foreach(var PROGRAM OUTPUT SUMMARY WORK_DIR)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "ManPage.cmake needs -D${var}=...")
  endif()
endforeach()

# The program must not see the real home or system root, even for --help.
file(MAKE_DIRECTORY "${WORK_DIR}/home" "${WORK_DIR}/root")
set(ENV{HOME} "${WORK_DIR}/home")
set(ENV{KORVANE_ROOT} "${WORK_DIR}/root")
set(ENV{LC_ALL} C.UTF-8)

execute_process(COMMAND "${PROGRAM}" --help OUTPUT_VARIABLE help RESULT_VARIABLE help_rc)
execute_process(COMMAND "${PROGRAM}" --version OUTPUT_VARIABLE version RESULT_VARIABLE version_rc
                OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT help_rc EQUAL 0 OR NOT version_rc EQUAL 0 OR help STREQUAL "")
  message(FATAL_ERROR "${PROGRAM} --help / --version failed (${help_rc}, ${version_rc})")
endif()
get_filename_component(name "${PROGRAM}" NAME_WE)
string(TOUPPER "${name}" upper_name)
string(TIMESTAMP date "%Y-%m-%d" UTC) # SOURCE_DATE_EPOCH, when set, makes it reproducible

# List separators and brackets would split or join list elements; park them while listing lines.
string(ASCII 1 semicolon)
string(ASCII 2 open_bracket)
string(ASCII 3 close_bracket)
string(REPLACE ";" "${semicolon}" help "${help}")
string(REPLACE "[" "${open_bracket}" help "${help}")
string(REPLACE "]" "${close_bracket}" help "${help}")
string(REPLACE "\n" ";" lines "${help}")

# A line as roff text: backslashes escaped, option dashes as minus signs (every dash when
# all_dashes is set), no line starting with a control character.
function(roff_text out text all_dashes)
  string(REPLACE "${semicolon}" ";" text "${text}")
  string(REPLACE "${open_bracket}" "[" text "${text}")
  string(REPLACE "${close_bracket}" "]" text "${text}")
  string(REPLACE "\\" "\\e" text "${text}")
  if(all_dashes)
    string(REPLACE "-" "\\-" text "${text}")
  else()
    set(text " ${text}")
    foreach(before " " "[" "(" "|")
      string(REPLACE "${before}--" "${before}\\-\\-" text "${text}")
      string(REPLACE "${before}-" "${before}\\-" text "${text}")
    endforeach()
    string(SUBSTRING "${text}" 1 -1 text)
  endif()
  if(text MATCHES "^[.']")
    set(text "\\&${text}")
  endif()
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

set(synopsis "")
set(body "")
set(kind "") # the block being written: prose, item or example
set(in_usage FALSE)

macro(close_block)
  if(kind STREQUAL "example")
    string(APPEND body ".fi\n")
  endif()
  set(kind "")
endmacro()

macro(start_block new_kind)
  if(NOT kind STREQUAL "${new_kind}")
    close_block()
    set(kind ${new_kind})
    if(kind STREQUAL "example")
      string(APPEND body ".PP\n.nf\n")
    elseif(kind STREQUAL "prose")
      string(APPEND body ".PP\n")
    endif()
  endif()
endmacro()

list(LENGTH lines count)
set(index 0)
while(index LESS count)
  list(GET lines ${index} line)
  math(EXPR index "${index} + 1")
  set(next "")
  if(index LESS count)
    list(GET lines ${index} next)
  endif()
  string(REGEX REPLACE "[ \t\r]+$" "" line "${line}")

  # One MATCHES per condition: a later one in the same if() overwrites CMAKE_MATCH_n.
  set(usage_line "")
  if(line MATCHES "^Usage: *(.*)$")
    set(usage_line "${CMAKE_MATCH_1}")
  elseif(in_usage AND line MATCHES "^ +([^ ].*)$")
    set(usage_line "${CMAKE_MATCH_1}")
  endif()
  if(NOT usage_line STREQUAL "")
    set(in_usage TRUE)
    roff_text(text "${usage_line}" TRUE)
    if(text MATCHES "^${name}( .*)?$")
      set(text "\\fB${name}\\fR${CMAKE_MATCH_1}")
    endif()
    string(APPEND synopsis "${text}\n")
    continue()
  endif()
  set(in_usage FALSE)

  if(line STREQUAL "")
    close_block()
  elseif(line MATCHES "^([^ ].*):$")
    close_block()
    string(TOUPPER "${CMAKE_MATCH_1}" heading)
    roff_text(heading "${heading}" FALSE)
    string(APPEND body ".SH \"${heading}\"\n")
  elseif(line MATCHES "^([A-Z][A-Za-z ]*): +(.+)$")
    close_block()
    string(TOUPPER "${CMAKE_MATCH_1}" heading)
    roff_text(text "${CMAKE_MATCH_2}" FALSE)
    string(APPEND body ".SH \"${heading}\"\n${text}\n")
    set(kind prose)
  elseif(line MATCHES "^  ([^ ]+( [^ ]+)*)  +([^ ].*)$")
    close_block()
    roff_text(term "${CMAKE_MATCH_1}" TRUE)
    roff_text(text "${CMAKE_MATCH_3}" FALSE)
    string(APPEND body ".TP\n\\fB${term}\\fR\n${text}\n")
    set(kind item)
  elseif(next MATCHES "^    " AND line MATCHES "^  ([^ ].*)$")
    close_block()
    roff_text(term "${CMAKE_MATCH_1}" TRUE)
    string(APPEND body ".TP\n\\fB${term}\\fR\n")
    set(kind item)
  elseif(line MATCHES "^  (${name} .*)$")
    start_block(example)
    roff_text(text "${CMAKE_MATCH_1}" TRUE)
    string(APPEND body "${text}\n")
  elseif(line MATCHES "^    +([^ ].*)$" AND kind STREQUAL "item")
    roff_text(text "${CMAKE_MATCH_1}" FALSE)
    string(APPEND body "${text}\n")
  else()
    string(REGEX REPLACE "^ +" "" line "${line}")
    start_block(prose)
    roff_text(text "${line}" FALSE)
    string(APPEND body "${text}\n")
  endif()
endwhile()
close_block()

roff_text(summary "${SUMMARY}" FALSE)
roff_text(version "${version}" FALSE)
file(WRITE "${OUTPUT}"
  ".\\\" Generated from \"${name} --help\" at build time; change the help text, not this file.\n"
  ".TH ${upper_name} 1 \"${date}\" \"${version}\" \"User Commands\"\n"
  # Left-aligned and unhyphenated: justification would widen the spaces inside quoted texts,
  # hyphenation split names such as $KORVANE_ROOT.
  ".ad l\n.nh\n"
  ".SH NAME\n${name} \\- ${summary}\n"
  ".SH SYNOPSIS\n.nf\n${synopsis}.fi\n"
  ".SH DESCRIPTION\n"
  "${body}")
