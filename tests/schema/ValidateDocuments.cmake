cmake_minimum_required(VERSION 3.25)
# Validates every .prog.config document of the examples and the tests (SOURCE_ROOT/examples,
# SOURCE_ROOT/tests) against SCHEMA with xmllint. A document listed in BROKEN below is meant to be
# refused: xmllint must refuse it, and its first complaint must be at the line given there. Every
# other document must validate. Prints "SKIPPED: ..." when xmllint is missing.
set(BROKEN
  "tests/tools/varnix-sim/documents/notxml.prog.config:1"
  "tests/tools/varnix-sim/documents/problems.prog.config:4"
  "tests/tools/varnix-sim/documents/deviations.prog.config:6")

find_program(XMLLINT xmllint)
if(NOT XMLLINT)
  message("SKIPPED: xmllint is not installed (scripts/setup installs libxml2-utils)")
  return()
endif()

file(GLOB_RECURSE documents RELATIVE "${SOURCE_ROOT}"
     "${SOURCE_ROOT}/examples/*.prog.config" "${SOURCE_ROOT}/tests/*.prog.config")
list(SORT documents)
set(failed "")
set(valid 0)
set(refused 0)
foreach(document IN LISTS documents)
  execute_process(COMMAND "${XMLLINT}" --noout --schema "${SCHEMA}" "${document}"
                  WORKING_DIRECTORY "${SOURCE_ROOT}"
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 60)
  set(expected_line "")
  foreach(entry IN LISTS BROKEN)
    if(entry MATCHES "^(.*):([0-9]+)$" AND CMAKE_MATCH_1 STREQUAL document)
      set(expected_line "${CMAKE_MATCH_2}")
    endif()
  endforeach()
  if(expected_line STREQUAL "")
    if(NOT rc EQUAL 0)
      string(APPEND failed "${document} does not validate:\n${err}")
    else()
      math(EXPR valid "${valid} + 1")
    endif()
  else()
    string(REGEX MATCH "^[^\n]*" first "${err}")
    if(rc EQUAL 0)
      string(APPEND failed "${document} validates, but is meant to be refused\n")
    elseif(NOT first MATCHES "^${document}:${expected_line}: ")
      string(APPEND failed "${document} is refused, but not first at line ${expected_line}:\n${err}")
    else()
      math(EXPR refused "${refused} + 1")
    endif()
  endif()
endforeach()
foreach(entry IN LISTS BROKEN)
  string(REGEX REPLACE ":[0-9]+$" "" document "${entry}")
  if(NOT document IN_LIST documents)
    string(APPEND failed "${document} is listed as broken but does not exist\n")
  endif()
endforeach()
if(failed)
  message(FATAL_ERROR "${failed}")
endif()
message(STATUS "${valid} documents validate, ${refused} broken ones are refused at their line")
