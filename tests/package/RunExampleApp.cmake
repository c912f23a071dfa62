# Configures and builds the example application in SOURCE_DIR against the package that the
# PackageConsumer test staged in PREFIX, runs it and compares its standard output with the file
# GOLDEN byte for byte. Any failing step, and any difference, fails the test.
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
