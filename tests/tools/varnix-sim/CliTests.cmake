# Command-line tests of varnix-sim: each runs the built simulator and checks status and output.
set(sim_run "${CMAKE_CURRENT_LIST_DIR}/RunCli.cmake")
set(docs "${CMAKE_CURRENT_LIST_DIR}/documents")
set(examples "${PROJECT_SOURCE_DIR}/examples")

# varnix_sim_test(NAME ARGS a|b|c RC n [STDOUT file] [STDOUT_REGEX re] [STDERR_REGEX re] [STDERR_LINES n])
function(varnix_sim_test name)
  cmake_parse_arguments(T "" "ARGS;RC;STDOUT;STDOUT_REGEX;STDERR_REGEX;STDERR_LINES" "" ${ARGN})
  set(defines -DSIM=$<TARGET_FILE:varnix-sim> "-DARGS=${T_ARGS}" -DWORKDIR=${PROJECT_SOURCE_DIR} -DEXPECT_RC=${T_RC})
  if(T_STDOUT)
    list(APPEND defines "-DEXPECT_STDOUT=${T_STDOUT}")
  endif()
  if(T_STDOUT_REGEX)
    list(APPEND defines "-DSTDOUT_REGEX=${T_STDOUT_REGEX}")
  endif()
  if(T_STDERR_REGEX)
    list(APPEND defines "-DSTDERR_REGEX=${T_STDERR_REGEX}")
  endif()
  if(DEFINED T_STDERR_LINES)
    list(APPEND defines "-DSTDERR_LINES=${T_STDERR_LINES}")
  endif()
  add_test(NAME VarnixSimCli.${name} COMMAND ${CMAKE_COMMAND} ${defines} -P ${sim_run})
endfunction()

# Each example against its golden trace (virtual time makes them exact).
varnix_sim_test(TankGoldenTrace RC 0
  ARGS "run|examples/tank/TankProgram.prog.config|--stimulus|examples/tank/tank.stimulus.csv"
  STDOUT ${examples}/tank/tank.golden.txt STDERR_REGEX "^20 cycles, 3 ports, 2 connectors")
varnix_sim_test(DeviceMonitorGoldenTrace RC 0
  ARGS "run|examples/device-monitor/DeviceMonitor.prog.config|--stimulus|examples/device-monitor/device.stimulus.csv|--cycles|15"
  STDOUT ${examples}/device-monitor/device.golden.txt)
varnix_sim_test(StringsGoldenTrace RC 0
  ARGS "run|examples/strings/Strings.prog.config|--stimulus|examples/strings/strings.stimulus.csv|--cycles|6"
  STDOUT ${examples}/strings/strings.golden.txt)
varnix_sim_test(TankCsvTrace RC 0
  ARGS "run|examples/tank/TankProgram.prog.config|--set|raw=16#8001@2|--cycles|2|--format|csv"
  STDOUT_REGEX "^cycle,time_us,raw,raw.quality,level,level.quality,level.timestamp_us,display\n1,1767225600000000,0,Good,0,Good,1767225600000000,0\n2,1767225600010000,32769,Bad Overrange,327.69,Bad Overrange,1767225600010000,327\n$")
varnix_sim_test(TankProfile RC 0
  ARGS "run|examples/tank/TankProgram.prog.config|--cycles|50|--profile"
  STDERR_REGEX "executable +min us +mean us +max us\nraw +[0-9.]+ +[0-9.]+ +[0-9.]+\nraw:level .*\nlevel:display ")

varnix_sim_test(NoTraceOnlySummary RC 0 ARGS "run|examples/tank/TankProgram.prog.config|--cycles|1000|--no-trace"
  STDOUT_REGEX "^$" STDERR_REGEX "^1000 cycles, 3 ports, 2 connectors")

# check
varnix_sim_test(CheckValid RC 0 ARGS "check|examples/tank/TankProgram.prog.config"
  STDOUT_REGEX "program type `TankProgram`: 3 ports, 2 connectors, 0 errors, 0 warnings: valid")
varnix_sim_test(CheckProblems RC 1 ARGS "check|tests/tools/varnix-sim/documents/problems.prog.config"
  STDOUT_REGEX "problems.prog.config:4: warning: Program attribute is unknown: `colour`\n.*problems.prog.config:8: error: Port `bogus` has unsupported type `float128`\n.*problems.prog.config:9: warning: port `wide` has dimension 4.*problems.prog.config:11: error: Port `in` already exists\n.*problems.prog.config:15: error: Parameter `gain` of type `double` has invalid configuration `two`\n.*problems.prog.config:16: error: Port `missing` does not exist\n.*problems.prog.config:18: error: Port `nowhere` does not exist\n.*problems.prog.config:19: error: Connector type `teleport` not available.*problems.prog.config:21: error: Quality provider reference `ghost` does not exist in `Problems`\n.*8 errors, 4 warnings: has problems")
varnix_sim_test(CheckSchemaDeviations RC 1 ARGS "check|tests/tools/varnix-sim/documents/deviations.prog.config"
  STDOUT_REGEX "deviations.prog.config:6: warning: schema: Element 'Port', attribute 'attributes': \\[facet 'pattern'\\] The value 'Input Archiv' is not accepted [^\n]*\n[^\n]*:7: warning: Port attribute is unknown: `size`\n[^\n]*:7: warning: schema: [^\n]*'Output  Archive'[^\n]*\n[^\n]*:11: warning: schema: Element 'Conector': This element is not expected[^\n]*\n[^\n]*0 errors, 4 warnings: has problems\n$")
varnix_sim_test(VersionIsThePackageVersion RC 0 ARGS "--version" STDOUT_REGEX "^varnix-sim ${PROJECT_VERSION}\n$")
varnix_sim_test(CheckQualityCycle RC 1 ARGS "check|tests/tools/varnix-sim/documents/cycle.prog.config"
  STDOUT_REGEX "cycle.prog.config:11: error: quality providers form a cycle: a:b -> b:c -> a:b")
varnix_sim_test(CheckMissingFile RC 2 ARGS "check|tests/tools/varnix-sim/documents/none.prog.config"
  STDERR_REGEX "^varnix-sim: .*none.prog.config: no such file\n$" STDERR_LINES 1)
varnix_sim_test(CheckNotXml RC 2 ARGS "check|tests/tools/varnix-sim/documents/notxml.prog.config"
  STDERR_REGEX "^varnix-sim: .*notxml.prog.config: not well-formed XML\n$" STDERR_LINES 1)
varnix_sim_test(RunRefusesAQualityCycle RC 1 ARGS "run|tests/tools/varnix-sim/documents/cycle.prog.config"
  STDERR_REGEX "not running a program whose qualities recurse; --force runs it anyway")

# graph and types
varnix_sim_test(GraphTank RC 0 ARGS "graph|examples/tank/TankProgram.prog.config"
  STDOUT ${examples}/tank/tank.golden.dot)
varnix_sim_test(Types RC 0 ARGS "types"
  STDOUT_REGEX "Port types:\n.*  qualified\\.float64\n.*Connector types \\(type: input -> output\\):\n.*  copy: int -> double\n.*  scale: unsigned short -> double\n")

# Bad input: one clear line and a non-zero status.
varnix_sim_test(SetBadLiteral RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--set|display=3.5"
  STDERR_REGEX "^varnix-sim: --set display=3.5: '3.5' is not a value of type short\n$" STDERR_LINES 1)
varnix_sim_test(SetUnknownPort RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--set|nosuch=1"
  STDERR_REGEX "^varnix-sim: --set nosuch=1: the program has no port 'nosuch'\n$" STDERR_LINES 1)
varnix_sim_test(UnknownOption RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--bogus" STDERR_LINES 1)
varnix_sim_test(NoCommand RC 2 ARGS "" STDERR_LINES 1)
varnix_sim_test(UnknownType RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--type|Nope"
  STDERR_REGEX "no Program of type 'Nope' \\(the document has: TankProgram\\)" STDERR_LINES 1)
varnix_sim_test(BadCycleTime RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--cycle-time|fast" STDERR_LINES 1)
varnix_sim_test(BadStimulusFile RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--stimulus|none.csv"
  STDERR_REGEX "none.csv: cannot open the stimulus file" STDERR_LINES 1)
varnix_sim_test(GraphSvgOrClearMessage RC 0 ARGS "graph|examples/tank/TankProgram.prog.config|--output|${CMAKE_CURRENT_BINARY_DIR}/tank.svg")
include(${CMAKE_CURRENT_LIST_DIR}/HostileCliTests.cmake)
