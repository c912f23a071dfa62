# Runs varnix-sim once under valgrind's memcheck: any memory error and any block definitely or
# indirectly lost fails. Variables:
#   SIM       the simulator
#   ARGS      its arguments, separated by "|"
#   WORKDIR   the directory it runs in
#   SANITIZE  ON in a sanitized build, whose simulator valgrind cannot run
# Without valgrind, or in a sanitized build, it prints a line starting with "SKIPPED:", which the
# test's SKIP_REGULAR_EXPRESSION turns into a skipped test.
if(SANITIZE)
  message("SKIPPED: a sanitized simulator does not run under valgrind; scripts/test runs this check in the plain build")
  return()
endif()
find_program(VALGRIND valgrind)
if(NOT VALGRIND)
  message("SKIPPED: valgrind is not installed; scripts/setup installs it")
  return()
endif()
string(REPLACE "|" ";" arguments "${ARGS}")
execute_process(COMMAND "${VALGRIND}" --error-exitcode=97 --leak-check=full
                        --show-leak-kinds=definite,indirect --errors-for-leak-kinds=definite,indirect
                        "${SIM}" ${arguments}
                WORKING_DIRECTORY "${WORKDIR}"
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err
                TIMEOUT 300)
if(NOT "${rc}" STREQUAL "0")
  message(FATAL_ERROR "varnix-sim under memcheck: exit status ${rc}\n${err}")
endif()
if(NOT "${err}" MATCHES "definitely lost: 0 bytes|All heap blocks were freed")
  message(FATAL_ERROR "memcheck's summary shows lost blocks:\n${err}")
endif()
