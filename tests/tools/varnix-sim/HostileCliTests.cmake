# Hostile documents through the simulator: each test writes its document at test time
# (tests/tools/hostile/HostileDocuments.cpp), runs varnix-sim on it while measuring time and peak
# memory, and checks the exit status, the message, that nothing of the document's payload is echoed,
# and that neither time nor memory is grossly exceeded. The figures are written to
# <build>/tests/hostile/<kind>.figures.
add_executable(hostile-documents "${PROJECT_SOURCE_DIR}/tests/tools/hostile/HostileDocuments.cpp")
target_link_libraries(hostile-documents PRIVATE varnix_build_flags)

# The bounds that fail a test are far above the measured figures (docs/robustness.md): a loaded
# machine must not make them fail, a parser that expands or copies without bound must. The
# sanitizers multiply both memory and time.
if(VARNIX_SANITIZE)
  set(hostile_max_mib 1000)
  set(hostile_max_seconds 60)
else()
  set(hostile_max_mib 200)
  set(hostile_max_seconds 10)
endif()

# varnix_hostile_test(KIND ARGS a|@DOC@|b RC n [STDOUT_REGEX re] [STDERR_REGEX re] [SECONDS_FACTOR n])
function(varnix_hostile_test kind)
  cmake_parse_arguments(T "" "ARGS;RC;STDOUT_REGEX;STDERR_REGEX;SECONDS_FACTOR" "" ${ARGN})
  set(max_seconds ${hostile_max_seconds})
  if(T_SECONDS_FACTOR)
    math(EXPR max_seconds "${max_seconds} * ${T_SECONDS_FACTOR}")
  endif()
  set(defines -DHELPER=$<TARGET_FILE:hostile-documents> -DSIM=$<TARGET_FILE:varnix-sim> -DKIND=${kind}
              "-DARGS=${T_ARGS}" -DWORKDIR=${PROJECT_BINARY_DIR}/tests/hostile -DEXPECT_RC=${T_RC}
              -DMAX_MIB=${hostile_max_mib} -DMAX_SECONDS=${max_seconds})
  if(DEFINED T_STDOUT_REGEX)
    list(APPEND defines "-DSTDOUT_REGEX=${T_STDOUT_REGEX}")
  endif()
  if(DEFINED T_STDERR_REGEX)
    list(APPEND defines "-DSTDERR_REGEX=${T_STDERR_REGEX}")
  endif()
  add_test(NAME VarnixSimHostile.${kind}
           COMMAND ${CMAKE_COMMAND} ${defines} -P "${PROJECT_SOURCE_DIR}/tests/tools/hostile/RunHostile.cmake")
  set_tests_properties(VarnixSimHostile.${kind} PROPERTIES TIMEOUT 300)
endfunction()

# varnix-sim's one line for a document that libxml2 refuses; nothing of the file follows it.
set(not_xml "^varnix-sim: [^\n]*\\.prog\\.config: not well-formed XML\n$")
# The program is built; the schema check cannot validate a tree that keeps entity references and
# says so in one warning.
set(valid "warning: schema: [^\n]*entity reference[^\n]*\n[^\n]*program type `Target`: 2 ports, 1 connectors, 0 errors, 1 warnings: has problems\n$")

# External entities: neither the local file nor anything on the network is read. In content the
# reference stays unexpanded and the program is valid; in an attribute value the parser cannot
# leave it unexpanded and refuses the document.
varnix_hostile_test(external-entity-file RC 1 ARGS "check|@DOC@" STDOUT_REGEX "${valid}" STDERR_REGEX "^$")
varnix_hostile_test(external-entity-file-attribute RC 2 ARGS "check|@DOC@" STDOUT_REGEX "^$" STDERR_REGEX "${not_xml}")
varnix_hostile_test(external-entity-network RC 1 ARGS "check|@DOC@" STDOUT_REGEX "${valid}" STDERR_REGEX "^$")

# Entity expansion: the nested one is refused, the flat one is not expanded (its attribute is only
# warned about, and the schema check leaves a document that declares entities alone), both in a few
# megabytes.
varnix_hostile_test(billion-laughs RC 2 ARGS "check|@DOC@" STDOUT_REGEX "^$" STDERR_REGEX "${not_xml}")
varnix_hostile_test(quadratic-blow-up RC 1 ARGS "check|@DOC@"
  STDOUT_REGEX "warning: schema: not checked: the document declares entities[^\n]*\n[^\n]*:6: warning: Program attribute is unknown: `note`\n[^\n]*program type `Target`: 1 ports, 0 connectors, 0 errors, 2 warnings: has problems\n$"
  STDERR_REGEX "^$")

# Beyond libxml2's limits (256 levels, 10,000,000 characters in one value) and bytes that are no
# XML: one line, no echo.
varnix_hostile_test(nested-elements RC 2 ARGS "check|@DOC@" STDOUT_REGEX "^$" STDERR_REGEX "${not_xml}")
varnix_hostile_test(ten-mebibyte-attribute RC 2 ARGS "check|@DOC@" STDOUT_REGEX "^$" STDERR_REGEX "${not_xml}")
varnix_hostile_test(non-utf8 RC 2 ARGS "check|@DOC@" STDOUT_REGEX "^$" STDERR_REGEX "${not_xml}")
varnix_hostile_test(binary-garbage RC 2 ARGS "check|@DOC@" STDOUT_REGEX "^$" STDERR_REGEX "${not_xml}")
varnix_hostile_test(empty RC 2 ARGS "check|@DOC@" STDOUT_REGEX "^$" STDERR_REGEX "${not_xml}")
varnix_hostile_test(bom-only RC 2 ARGS "check|@DOC@" STDOUT_REGEX "^$" STDERR_REGEX "${not_xml}")
varnix_hostile_test(truncated RC 2 ARGS "check|@DOC@" STDOUT_REGEX "^$" STDERR_REGEX "${not_xml}")

# Large programs: built and run for 100 cycles, 5,000 connectors fanning out from one port and a
# chain of 5,000 in which each connector takes the quality of the one before it (releasing the
# program releases the chain link by link, with no nesting that grows with its length). Their
# start-up is linear in the size of the program, but 10,000 items take the sanitized build several
# seconds, so their bound is six times the others'.
varnix_hostile_test(many-ports RC 0 ARGS "run|@DOC@|--cycles|100|--no-trace"
  STDOUT_REGEX "^$" STDERR_REGEX "^100 cycles, 10000 ports, 0 connectors, [^\n]*\n$" SECONDS_FACTOR 6)
varnix_hostile_test(many-connectors RC 0 ARGS "run|@DOC@|--cycles|100|--no-trace"
  STDOUT_REGEX "^$" STDERR_REGEX "^100 cycles, 5001 ports, 5000 connectors, [^\n]*\n$" SECONDS_FACTOR 6)
varnix_hostile_test(connector-chain RC 0 ARGS "run|@DOC@|--cycles|100|--no-trace"
  STDOUT_REGEX "^$" STDERR_REGEX "^100 cycles, 5001 ports, 5000 connectors, [^\n]*\n$" SECONDS_FACTOR 6)

# A literal of 100,000 digits is refused by the parameter; the report shows its start and length.
varnix_hostile_test(long-literal RC 1 ARGS "check|@DOC@"
  STDOUT_REGEX ":10: error: Parameter `gain` of type `double` has invalid configuration `1777777777777777\\.\\.\\.\\(100000 bytes\\)`\n"
  STDERR_REGEX "^$")
# A reference with 10,000 indices: the walk stops at the first index beyond its bound and names
# only the characters up to it.
varnix_hostile_test(long-reference RC 1 ARGS "check|@DOC@"
  STDOUT_REGEX ":3: error: Port Main/ou out of range\n"
  STDERR_REGEX "^$")
