# Writes one hostile document, runs varnix-sim on it under the measuring helper, and checks what
# came out. Variables:
#   HELPER          the hostile-documents helper (writes the document, measures the run)
#   SIM             the simulator
#   KIND            the document kind (hostile-documents kinds lists them)
#   WORKDIR         a directory for the document and the outputs
#   ARGS            the simulator's arguments, separated by "|"; @DOC@ stands for the document
#   EXPECT_RC       the exit status the simulator must give
#   STDOUT_REGEX    a regular expression standard output must match (optional)
#   STDERR_REGEX    a regular expression standard error must match (optional)
#   MAX_MIB         peak resident memory that counts as gross excess
#   MAX_SECONDS     wall-clock time that counts as gross excess
#
# Besides the status and the messages, the test fails when any part of the document's payload
# comes back in the output: the word Hostile that every large or secret part carries, the secret
# text of the external entity's file, a run of 100 digits or 100 indices. The measured figures
# are written to WORKDIR/KIND.figures and printed.
file(MAKE_DIRECTORY "${WORKDIR}")
set(doc "${WORKDIR}/${KIND}.prog.config")
execute_process(COMMAND "${HELPER}" write "${KIND}" "${doc}" RESULT_VARIABLE written)
if(NOT written EQUAL 0)
  message(FATAL_ERROR "cannot write the document ${KIND}")
endif()

string(REPLACE "@DOC@" "${doc}" arguments "${ARGS}")
string(REPLACE "|" ";" arguments "${arguments}")
set(out_file "${WORKDIR}/${KIND}.stdout")
set(err_file "${WORKDIR}/${KIND}.stderr")
execute_process(COMMAND "${HELPER}" measure "${out_file}" "${err_file}" "${SIM}" ${arguments}
                RESULT_VARIABLE measured OUTPUT_VARIABLE figures TIMEOUT 300)
if(NOT measured EQUAL 0 OR NOT figures MATCHES "^status ([0-9]+) seconds ([0-9.]+) cpu ([0-9.]+) peak_kib ([0-9]+)")
  message(FATAL_ERROR "the measured run of varnix-sim on ${KIND} did not finish (${measured}): ${figures}")
endif()
set(rc "${CMAKE_MATCH_1}")
set(seconds "${CMAKE_MATCH_2}")
set(cpu "${CMAKE_MATCH_3}")
math(EXPR peak_mib "${CMAKE_MATCH_4} / 1024")
file(READ "${out_file}" out)
file(READ "${err_file}" err)

set(failed "")
if(NOT rc STREQUAL EXPECT_RC)
  string(APPEND failed "exit status ${rc}, expected ${EXPECT_RC}\n")
endif()
if(DEFINED STDOUT_REGEX AND NOT out MATCHES "${STDOUT_REGEX}")
  string(APPEND failed "standard output does not match '${STDOUT_REGEX}'\n")
endif()
if(DEFINED STDERR_REGEX AND NOT err MATCHES "${STDERR_REGEX}")
  string(APPEND failed "standard error does not match '${STDERR_REGEX}'\n")
endif()
foreach(stream out err)
  if("${${stream}}" MATCHES "Hostile|SECRET-|[0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9]([0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9])([0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9])+|(\\[[0-9]\\]\\[[0-9]\\]\\[[0-9]\\]\\[[0-9]\\]\\[[0-9]\\])(\\[[0-9]\\]\\[[0-9]\\]\\[[0-9]\\]\\[[0-9]\\]\\[[0-9]\\])+")
    string(SUBSTRING "${CMAKE_MATCH_0}" 0 60 echoed)
    string(APPEND failed "standard ${stream}put echoes the document's content: '${echoed}...'\n")
  endif()
endforeach()
if(peak_mib GREATER MAX_MIB)
  string(APPEND failed "peak memory ${peak_mib} MiB, more than ${MAX_MIB} MiB\n")
endif()
if(seconds GREATER MAX_SECONDS)
  string(APPEND failed "took ${seconds} s, more than ${MAX_SECONDS} s\n")
endif()

# The message: standard error's first line, or standard output's last when standard error is empty.
if(err STREQUAL "")
  string(REGEX REPLACE "\n$" "" said "${out}")
  string(REGEX REPLACE ".*\n" "" said "${said}")
else()
  string(REGEX REPLACE "\n.*" "" said "${err}")
endif()
set(summary "${KIND}: status ${rc}, ${seconds} s (processor ${cpu} s), peak ${peak_mib} MiB: ${said}")
file(WRITE "${WORKDIR}/${KIND}.figures" "${summary}\n")
message(STATUS "${summary}")
if(failed)
  string(SUBSTRING "${out}" 0 2000 out_start)
  string(SUBSTRING "${err}" 0 2000 err_start)
  message(FATAL_ERROR "varnix-sim ${ARGS} on ${KIND}\n${failed}--- stdout (start)\n${out_start}\n--- stderr (start)\n${err_start}")
endif()
