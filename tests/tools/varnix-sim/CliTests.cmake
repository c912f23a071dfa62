# Command-line tests of varnix-sim: each runs the built simulator and checks status and output.
set(sim_run "${CMAKE_CURRENT_LIST_DIR}/RunCli.cmake")
set(docs "${CMAKE_CURRENT_LIST_DIR}/documents")
set(examples "${PROJECT_SOURCE_DIR}/examples")

# varnix_sim_test(NAME ARGS a|b|c RC n [STDOUT file] [STDOUT_REGEX re] [STDERR_REGEX re] [STDERR_LINES n]
#                 [ENV NAME=set:VALUE|NAME=unset:...])
function(varnix_sim_test name)
  cmake_parse_arguments(T "" "ARGS;RC;STDOUT;STDOUT_REGEX;STDERR_REGEX;STDERR_LINES" "ENV" ${ARGN})
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
  if(T_ENV)
    set_tests_properties(VarnixSimCli.${name} PROPERTIES ENVIRONMENT_MODIFICATION "${T_ENV}")
  endif()
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
  STDERR_REGEX "cycle.prog.config:11: error: quality providers form a cycle: a:b -> b:c -> a:b; reading a quality would recurse without end\nvarnix-sim: not running a program whose qualities recurse; --force runs it anyway\n$")

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
# A port given with a mistyped program root gets the simulator's own message, never the meta
# data's complaint about an enumerator without element.
varnix_sim_test(SetWithAMistypedRoot RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--set|App/Mian.level=1"
  STDERR_REGEX "^varnix-sim: --set App/Mian.level=1: the program has no port 'App/Mian.level'\n$" STDERR_LINES 1)
varnix_sim_test(UnknownOption RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--bogus" STDERR_LINES 1)
varnix_sim_test(NoCommand RC 2 ARGS "" STDERR_LINES 1)
varnix_sim_test(UnknownType RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--type|Nope"
  STDERR_REGEX "no Program of type 'Nope' \\(the document has: TankProgram\\)" STDERR_LINES 1)
varnix_sim_test(BadCycleTime RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--cycle-time|fast" STDERR_LINES 1)
varnix_sim_test(CycleTimeWithAFraction RC 0
  ARGS "run|examples/tank/TankProgram.prog.config|--cycle-time|1.5ms|--cycles|2|--format|csv"
  STDOUT_REGEX "\n1,1767225600000000,[^\n]*\n2,1767225600001500,")
varnix_sim_test(CycleTimeInSeconds RC 0
  ARGS "run|examples/tank/TankProgram.prog.config|--cycle-time|2s|--cycles|2|--format|csv"
  STDOUT_REGEX "\n1,1767225600000000,[^\n]*\n2,1767225602000000,")
varnix_sim_test(CycleTimePointWithoutDigits RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--cycle-time|1.ms"
  STDERR_REGEX "^varnix-sim: --cycle-time 1.ms: expected a duration such as 10ms, 500us or 1s\n$" STDERR_LINES 1)
varnix_sim_test(CycleTimeUnitInCapitals RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--cycle-time|10MS"
  STDERR_REGEX "^varnix-sim: --cycle-time 10MS: expected a duration such as 10ms, 500us or 1s\n$" STDERR_LINES 1)
varnix_sim_test(CycleTimeBelowAMicrosecond RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--cycle-time|0.4us"
  STDERR_REGEX "^varnix-sim: --cycle-time 0.4us: must be at least 1us\n$" STDERR_LINES 1)
varnix_sim_test(CycleTimeBeyondSixtyFourBits RC 2
  ARGS "run|examples/tank/TankProgram.prog.config|--cycle-time|99999999999999999999999s"
  STDERR_REGEX "^varnix-sim: --cycle-time 99999999999999999999999s: too long for a cycle time\n$" STDERR_LINES 1)
# The controller's file system is a private directory in the temporary directory that the
# environment names: one that is not there stops the run with what to do. Named by TMP here (the
# variable after TMPDIR): valgrind, which runs these tests under scripts/memcheck.py, keeps its own
# files in TMPDIR.
varnix_sim_test(TemporaryDirectoryMissing RC 2 ARGS "run|examples/tank/TankProgram.prog.config"
  ENV "TMPDIR=unset:" "TMP=set:/nonexistent/varnix-tmp"
  STDERR_REGEX "^varnix-sim: cannot create a private directory for the simulated controller \\(cannot create a directory in /nonexistent/varnix-tmp: No such file or directory\\). set TMPDIR to a writable directory\n$"
  STDERR_LINES 1)
varnix_sim_test(EnvironmentInHelp RC 0 ARGS "--help"
  STDOUT_REGEX "Environment: the simulated controller's file system is a private directory in TMPDIR")
varnix_sim_test(BadStimulusFile RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--stimulus|none.csv"
  STDERR_REGEX "none.csv: cannot open the stimulus file" STDERR_LINES 1)
varnix_sim_test(GraphSvgOrClearMessage RC 0 ARGS "graph|examples/tank/TankProgram.prog.config|--output|${CMAKE_CURRENT_BINARY_DIR}/tank.svg")

# The HTML report: to standard output with --format html, and the tank example's page against the
# golden outline of its structure, with Graphviz's dot and without, then in headless Chromium
# (scripts/setup --browser installs it; the test is skipped with a message where it is missing).
varnix_sim_test(HtmlToStandardOutput RC 0 ARGS "run|examples/tank/TankProgram.prog.config|--cycles|3|--format|html"
  STDOUT_REGEX "^<!DOCTYPE html>\n.*<section id=\"graph\">.*<svg class=\"plot\".*</body></html>\n$")
varnix_sim_test(HtmlInRunHelp RC 0 ARGS "run|--help" STDOUT_REGEX "vcd or html .*html: a self-contained page")
varnix_sim_test(UnknownFormat RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--format|pdf"
  STDERR_REGEX "--format pdf: expected table, csv, jsonl, vcd or html" STDERR_LINES 1)
if(EXISTS /dev/full)
  varnix_sim_test(HtmlOnAFullDisk RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--format|html|--trace|/dev/full"
    STDERR_REGEX "^varnix-sim: --trace /dev/full: cannot write the page" STDERR_LINES 1)
endif()
find_package(Python3 COMPONENTS Interpreter)
if(Python3_Interpreter_FOUND)
  set(html_check ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/html_report.py)
  add_test(NAME VarnixSimCli.TankHtmlReportOutline
    COMMAND ${html_check} outline $<TARGET_FILE:varnix-sim> ${PROJECT_SOURCE_DIR} ${docs}/tank-report.outline)
  add_test(NAME VarnixSimCli.TankHtmlReportOutlineWithoutDot
    COMMAND ${html_check} outline $<TARGET_FILE:varnix-sim> ${PROJECT_SOURCE_DIR} ${docs}/tank-report.outline --no-dot)
  add_test(NAME VarnixSimCli.TankHtmlReportInBrowser
    COMMAND ${html_check} browser $<TARGET_FILE:varnix-sim> ${PROJECT_SOURCE_DIR})
  add_test(NAME VarnixSimCli.ScenarioVerdictsInHtmlReport
    COMMAND ${html_check} verdicts $<TARGET_FILE:varnix-sim> ${PROJECT_SOURCE_DIR})
  set_tests_properties(VarnixSimCli.TankHtmlReportOutline VarnixSimCli.TankHtmlReportOutlineWithoutDot
    VarnixSimCli.ScenarioVerdictsInHtmlReport PROPERTIES TIMEOUT 180)
  set_tests_properties(VarnixSimCli.TankHtmlReportInBrowser PROPERTIES TIMEOUT 400 SKIP_RETURN_CODE 77)
else()
  message(WARNING "python3 not found: the HTML report's outline and browser tests are left out (scripts/setup installs it)")
endif()

# test: scenarios with expectations. Each example's scenario passes (examples with a CMake project
# of their own bring port types the simulator does not have; their tests run their scenarios).
file(GLOB example_scenarios CONFIGURE_DEPENDS "${examples}/*/*.scenario.csv")
foreach(scenario ${example_scenarios})
  get_filename_component(dir "${scenario}" DIRECTORY)
  get_filename_component(example "${dir}" NAME)
  file(GLOB document RELATIVE "${PROJECT_SOURCE_DIR}" "${dir}/*.prog.config")
  file(RELATIVE_PATH relative "${PROJECT_SOURCE_DIR}" "${scenario}")
  if(NOT EXISTS "${dir}/CMakeLists.txt")
    varnix_sim_test(Scenario.${example} RC 0 ARGS "test|${document}|${relative}"
      STDOUT_REGEX "^1 scenario, [0-9]+ expectations: [0-9]+ passed, 0 failed; PASSED\n$" STDERR_LINES 0)
  endif()
endforeach()
set(tank "examples/tank/TankProgram.prog.config")
set(failing "tests/tools/varnix-sim/documents/tank.failing.scenario.csv")
varnix_sim_test(ScenarioFailuresNameLineCycleColumnExpectedAndActual RC 1
  ARGS "test|${tank}|${failing}|examples/tank/tank.scenario.csv"
  STDOUT_REGEX "^${failing}:5: cycle 3: level: expected 25.5~0.1, got 25\n${failing}:6: cycle 9: level.quality: expected Bad Overrange, got Good\n${failing}:6: cycle 9: level.time: expected T#90ms, got T#80ms\n2 scenarios, 41 expectations: 38 passed, 3 failed; FAILED \\(1 of 2 scenarios\\)\n$")
varnix_sim_test(ScenarioAsStimulusFileIgnoresExpectations RC 0
  ARGS "run|${tank}|--stimulus|examples/tank/tank.scenario.csv"
  STDOUT ${examples}/tank/tank.golden.txt)
# Scenario errors: file and line, status 2, nothing run (no summary).
foreach(case "unknown-port:2: the program has no port 'levle'"
              "bad-literal:3: \"expect display\": 'twenty-five' is not a value of port 'display' \\(16-bit signed integer\\)"
              "out-of-order:4: cycle 3 is out of order: it follows cycle 5; cycles must rise from line to line"
              "twice:3: cycle 1 appears a second time \\(first on line 2\\); a cycle may appear once"
              "bad-quality:3: \"expect level.quality\": 'Bad Overrun' is not a quality: expected a state")
  string(FIND "${case}" ":" colon)
  string(SUBSTRING "${case}" 0 ${colon} name)
  string(SUBSTRING "${case}" ${colon} -1 message)
  varnix_sim_test(ScenarioError.${name} RC 2
    ARGS "test|${tank}|examples/tank/tank.scenario.csv|tests/tools/varnix-sim/documents/${name}.scenario.csv"
    STDOUT_REGEX "^$" STDERR_REGEX "^varnix-sim: tests/tools/varnix-sim/documents/${name}.scenario.csv${message}" STDERR_LINES 1)
endforeach()
varnix_sim_test(ScenarioBeyondCycles RC 2 ARGS "test|${tank}|examples/tank/tank.scenario.csv|--cycles|10"
  STDOUT_REGEX "^$" STDERR_REGEX "tank.scenario.csv:13: cycle 20 lies beyond the 10 cycles to run; run at least 20" STDERR_LINES 1)
varnix_sim_test(ScenarioMissingFile RC 2 ARGS "test|${tank}|none.scenario.csv"
  STDERR_REGEX "^varnix-sim: none.scenario.csv: cannot open the scenario\n$" STDERR_LINES 1)
varnix_sim_test(TestHelpShowsTheScenarioFormat RC 0 ARGS "test|--help"
  STDOUT_REGEX "cycle,raw,expect level,expect level.quality.*Exit status: 0 all passed, 1 an expectation failed, 2")
varnix_sim_test(HtmlInTestHelp RC 0 ARGS "test|--help" STDOUT_REGEX "--html TEXT +Write a self-contained page")
find_package(Python3 COMPONENTS Interpreter)
if(Python3_Interpreter_FOUND)
  add_test(NAME VarnixSimCli.JUnitReport
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/JUnitReport.py $<TARGET_FILE:varnix-sim>
            ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_BINARY_DIR}/junit-report)
  set_tests_properties(VarnixSimCli.JUnitReport PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
else()
  message(WARNING "python3 not found: the JUnit report test is not run (apt-get install python3)")
endif()

# map, and run --modbus with clients
varnix_sim_test(MapTank RC 0 ARGS "map|examples/tank/TankProgram.prog.config"
  STDOUT ${examples}/tank/tank.golden.map)
varnix_sim_test(MapBadFormat RC 2 ARGS "map|examples/tank/TankProgram.prog.config|--format|xml"
  STDERR_REGEX "^varnix-sim: --format xml: expected table or csv\n$" STDERR_LINES 1)
varnix_sim_test(ModbusBadEndpoint RC 2 ARGS "run|examples/tank/TankProgram.prog.config|--modbus|127.0.0.1:port"
  STDERR_REGEX "^varnix-sim: --modbus 127.0.0.1:port: expected \\[HOST:\\]PORT" STDERR_LINES 1)
varnix_sim_test(RealTimeSummary RC 0 ARGS "run|examples/tank/TankProgram.prog.config|--cycles|20|--cycle-time|1ms|--real-time|--no-trace"
  STDERR_REGEX "^20 cycles, .*\nreal time: 20 cycles of 1000 us, [0-9]+ overruns; lateness of cycle starts: min [0-9.]+ us, mean [0-9.]+ us, max [0-9.]+ us\ncycles ran at [a-z-]+ priority[^\n]*\nlateness +cycles\n  0-10 us +[0-9]+\n")
include(${CMAKE_CURRENT_LIST_DIR}/modbus/ModbusTests.cmake)

# Nothing of a program outlives it, also when connectors in opposite directions hold each other
# through their ports: memcheck finds no lost block after a run (skipped without valgrind).
add_test(NAME VarnixSimCli.BothWaysRunLosesNoMemory
  COMMAND ${CMAKE_COMMAND} -DSIM=$<TARGET_FILE:varnix-sim>
    "-DARGS=run|tests/tools/varnix-sim/documents/both-ways.prog.config|--cycles|5|--set|a=7"
    -DWORKDIR=${PROJECT_SOURCE_DIR} -DSANITIZE=${VARNIX_SANITIZE}
    -P ${CMAKE_CURRENT_LIST_DIR}/RunUnderMemcheck.cmake)
set_tests_properties(VarnixSimCli.BothWaysRunLosesNoMemory PROPERTIES SKIP_REGULAR_EXPRESSION "SKIPPED:" TIMEOUT 300)

include(${CMAKE_CURRENT_LIST_DIR}/HostileCliTests.cmake)
