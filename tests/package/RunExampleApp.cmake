# Configures and builds the example application in SOURCE_DIR against the package that the
# PackageConsumer test staged in PREFIX, runs it and compares its standard output with the file
# GOLDEN byte for byte, then runs the application's own GoogleTest (built against the installed
# VarnixBase::Sim). Any failing step, any difference and any failing test fail the test.
file(REMOVE_RECURSE "${WORK_DIR}")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "step failed (${rc}): ${ARGN}")
  endif()
endfunction()

if(NOT EXISTS "${PREFIX}")
  message(FATAL_ERROR "no staged VarnixBase package in ${PREFIX}: the PackageConsumer test stages it")
endif()

set(flags "")
if(SANITIZE)
  set(flags "-DCMAKE_CXX_FLAGS=-fsanitize=address,undefined" "-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=address,undefined")
endif()
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${PREFIX}" ${flags})
run(${CMAKE_COMMAND} --build "${WORK_DIR}/build")

execute_process(COMMAND "${WORK_DIR}/build/motor-app"
                OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE rc)
file(WRITE "${WORK_DIR}/output.txt" "${output}")
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "motor-app failed (${rc}):\n${errors}${output}")
endif()
if(NOT errors STREQUAL "")
  message(FATAL_ERROR "motor-app wrote to standard error:\n${errors}")
endif()

file(READ "${GOLDEN}" expected)
if(NOT output STREQUAL expected)
  find_program(DIFF diff)
  if(DIFF)
    execute_process(COMMAND "${DIFF}" -u "${GOLDEN}" "${WORK_DIR}/output.txt")
  endif()
  message(FATAL_ERROR "the output of motor-app (${WORK_DIR}/output.txt) differs from ${GOLDEN}")
endif()
message(STATUS "motor-app output matches ${GOLDEN}")

# The application's tests: GoogleTest is there wherever this project's tests are built, so a
# consumer build that skipped them is a failure here.
set(tests "${WORK_DIR}/build/motor-app-tests")
if(NOT EXISTS "${tests}")
  message(FATAL_ERROR "the example's tests (motor-app-tests) were not built: see the configure output above")
endif()
execute_process(COMMAND "${tests}" OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE rc)
file(WRITE "${WORK_DIR}/tests.txt" "${output}${errors}")
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "motor-app-tests failed (${rc}):\n${output}${errors}")
endif()
string(REGEX MATCH "\\[  PASSED  \\] [0-9]+ tests?" passed "${output}")
if(passed STREQUAL "" OR passed MATCHES "\\] 0 tests")
  message(FATAL_ERROR "motor-app-tests ran no test:\n${output}${errors}")
endif()
message(STATUS "motor-app-tests: ${passed}")
