# Installs the build in BUILD_DIR into a staging prefix, then configures, builds and runs the
# outside project in SOURCE_DIR against it. Any failing step fails the test.
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "step failed (${rc}): ${ARGN}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
set(flags "")
if(SANITIZE)
  set(flags "-DCMAKE_CXX_FLAGS=-fsanitize=address,undefined" "-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=address,undefined")
endif()
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${prefix}" ${flags})
run(${CMAKE_COMMAND} --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/package_consumer")
