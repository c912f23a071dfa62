# Compiles tests/package/main.cpp with the flags `pkg-config --cflags --libs varnixbase` gives for
# the install in PREFIX (the PackageConsumer test stages it) and runs the program.
find_program(PKG_CONFIG pkg-config)
find_program(CXX NAMES c++ g++)
if(NOT PKG_CONFIG OR NOT CXX)
  message(FATAL_ERROR "pkg-config and a C++ compiler are needed (scripts/setup installs them)")
endif()
if(NOT EXISTS "${PREFIX}/lib/pkgconfig/varnixbase.pc")
  message(FATAL_ERROR "no varnixbase.pc in ${PREFIX}/lib/pkgconfig: the PackageConsumer test installs it")
endif()
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")

execute_process(COMMAND ${CMAKE_COMMAND} -E env "PKG_CONFIG_PATH=${PREFIX}/lib/pkgconfig"
                        "${PKG_CONFIG}" --cflags --libs varnixbase
                RESULT_VARIABLE rc OUTPUT_VARIABLE flags ERROR_VARIABLE err OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config --cflags --libs varnixbase failed:\n${err}")
endif()
foreach(expected "-I${PREFIX}/include" "-I/usr/include/libxml2" "-lVarnixBase.Core" "-lZon.Platform" "-lxml2" "-lfmt")
  string(FIND " ${flags} " " ${expected} " at)
  if(at EQUAL -1)
    message(FATAL_ERROR "pkg-config gives '${flags}', without ${expected}")
  endif()
endforeach()

separate_arguments(flags UNIX_COMMAND "${flags}")
set(sanitize "")
if(SANITIZE)
  set(sanitize -fsanitize=address,undefined)
endif()
execute_process(COMMAND "${CXX}" -std=c++20 ${sanitize} "${SOURCE_DIR}/main.cpp" -o "${WORK_DIR}/consumer" ${flags}
                RESULT_VARIABLE rc ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "compiling with the pkg-config flags failed:\n${err}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E env "LD_LIBRARY_PATH=${PREFIX}/lib" "${WORK_DIR}/consumer"
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 60)
if(NOT rc EQUAL 0 OR NOT out MATCHES "^VarnixBase.Core [0-9]+\\.[0-9]+\\.[0-9]+\n$")
  message(FATAL_ERROR "the consumer built with pkg-config failed (${rc}):\n${out}${err}")
endif()
message(STATUS "consumer built with '${flags}' runs: ${out}")
