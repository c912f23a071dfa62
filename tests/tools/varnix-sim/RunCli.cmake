# Runs varnix-sim once and checks what it did. Variables:
#   SIM             the simulator
#   ARGS            its arguments, separated by "|"
#   WORKDIR         the directory it runs in
#   EXPECT_RC       the exit status it must give
#   EXPECT_STDOUT   a file whose content standard output must equal byte for byte (optional)
#   STDOUT_REGEX    a regular expression standard output must match (optional)
#   STDERR_REGEX    a regular expression standard error must match (optional)
#   STDERR_LINES    the number of lines standard error must have (optional)
#   the environment variable VARNIX_TEST_WRAPPER, when set, is a command (its words separated by
#   ";") that runs the simulator, such as valgrind's memcheck (scripts/memcheck.py)
string(REPLACE "|" ";" arguments "${ARGS}")
set(wrapper "$ENV{VARNIX_TEST_WRAPPER}")
execute_process(COMMAND ${wrapper} "${SIM}" ${arguments}
                WORKING_DIRECTORY "${WORKDIR}"
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err
                TIMEOUT 120)
set(failed "")
if(NOT "${rc}" STREQUAL "${EXPECT_RC}")
  string(APPEND failed "exit status ${rc}, expected ${EXPECT_RC}\n")
endif()
if(DEFINED EXPECT_STDOUT)
  file(READ "${EXPECT_STDOUT}" expected)
  if(NOT "${out}" STREQUAL "${expected}")
    file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/actual-output.txt" "${out}")
    string(APPEND failed "standard output differs from ${EXPECT_STDOUT} (written to ${CMAKE_CURRENT_BINARY_DIR}/actual-output.txt)\n")
  endif()
endif()
if(DEFINED STDOUT_REGEX AND NOT "${out}" MATCHES "${STDOUT_REGEX}")
  string(APPEND failed "standard output does not match '${STDOUT_REGEX}'\n")
endif()
if(DEFINED STDERR_REGEX AND NOT "${err}" MATCHES "${STDERR_REGEX}")
  string(APPEND failed "standard error does not match '${STDERR_REGEX}'\n")
endif()
if(DEFINED STDERR_LINES)
  string(REGEX MATCHALL "\n" newlines "${err}")
  list(LENGTH newlines count)
  if(NOT count EQUAL STDERR_LINES)
    string(APPEND failed "standard error has ${count} lines, expected ${STDERR_LINES}\n")
  endif()
endif()
if(failed)
  message(FATAL_ERROR "varnix-sim ${ARGS}\n${failed}--- stdout\n${out}--- stderr\n${err}")
endif()
