# Runs the simulator that the PackageConsumer test installed into PREFIX, with no LD_LIBRARY_PATH:
# it must find its libraries through its own RPATH, print the package version VERSION, run an
# installed example and check it against the installed schema.
if(NOT EXISTS "${PREFIX}/bin/varnix-sim")
  message(FATAL_ERROR "no installed simulator in ${PREFIX}: the PackageConsumer test installs it")
endif()

function(sim out_var)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH "${PREFIX}/bin/varnix-sim" ${ARGN}
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 120)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "varnix-sim ${ARGN} failed (${rc}):\n${err}${out}")
  endif()
  set(${out_var} "${out}" PARENT_SCOPE)
  set(${out_var}_err "${err}" PARENT_SCOPE)
endfunction()

sim(version --version)
if(NOT version STREQUAL "varnix-sim ${VERSION}\n")
  message(FATAL_ERROR "varnix-sim --version printed '${version}', expected 'varnix-sim ${VERSION}'")
endif()

set(tank "${PREFIX}/share/varnixbase/examples/tank")
sim(trace run "${tank}/TankProgram.prog.config" --stimulus "${tank}/tank.stimulus.csv")
file(READ "${tank}/tank.golden.txt" golden)
if(NOT trace STREQUAL golden)
  message(FATAL_ERROR "the installed simulator's trace of the tank example differs from tank.golden.txt:\n${trace}")
endif()

# The installed schema is found beside the program: no note about a missing schema.
sim(report check "${tank}/TankProgram.prog.config")
if(NOT report MATCHES "0 errors, 0 warnings: valid\n$" OR NOT report_err STREQUAL "")
  message(FATAL_ERROR "varnix-sim check of the installed example:\n${report}${report_err}")
endif()
message(STATUS "installed varnix-sim ${VERSION} runs without LD_LIBRARY_PATH")
