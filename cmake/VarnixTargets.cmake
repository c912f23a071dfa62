# One helper per kind of target: warnings, sanitizers, alias and install rules are applied here
# and nowhere else.

# Installed programs find the project's libraries relative to themselves (the library directory
# seen from the program directory), so that an install into any prefix runs without
# LD_LIBRARY_PATH. The Debian packages drop it again (cmake/DebianStage.cmake).
file(RELATIVE_PATH varnix_bin_to_lib "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set(CMAKE_INSTALL_RPATH "$ORIGIN/${varnix_bin_to_lib}")

add_library(varnix_build_flags INTERFACE)
target_compile_options(varnix_build_flags INTERFACE -Wall -Wextra)
if(VARNIX_BUILD_FUZZ)
  # The fuzz build: every library is instrumented for libFuzzer's coverage and runs under
  # AddressSanitizer and UndefinedBehaviorSanitizer; only the fuzz targets link libFuzzer itself.
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "VARNIX_BUILD_FUZZ needs clang: configure with -DCMAKE_CXX_COMPILER=clang++")
  endif()
  target_compile_options(varnix_build_flags INTERFACE
    -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(varnix_build_flags INTERFACE -fsanitize=address,undefined)
elseif(VARNIX_SANITIZE)
  target_compile_options(varnix_build_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(varnix_build_flags INTERFACE -fsanitize=address,undefined)
elseif(VARNIX_SANITIZE_THREAD)
  target_compile_options(varnix_build_flags INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(varnix_build_flags INTERFACE -fsanitize=thread)
endif()
install(TARGETS varnix_build_flags EXPORT VarnixBaseTargets COMPONENT development)

# varnix_add_library(<target> ALIAS <ns::name> DIRECTORY <dir> [EXCLUDE <subdirs>...] [LINK <libs>...])
# A shared library of every .cpp below DIRECTORY, with src/ as its include root. EXCLUDE names
# subdirectories of DIRECTORY that are libraries of their own.
function(varnix_add_library target)
  cmake_parse_arguments(ARG "" "ALIAS;DIRECTORY" "EXCLUDE;LINK;PRIVATE_LINK" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${ARG_DIRECTORY}/*.cpp")
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${ARG_DIRECTORY}/*.hpp")
  foreach(subdir ${ARG_EXCLUDE})
    list(FILTER sources EXCLUDE REGEX "^${ARG_DIRECTORY}/${subdir}/")
    list(FILTER headers EXCLUDE REGEX "^${ARG_DIRECTORY}/${subdir}/")
  endforeach()
  # The sources are compiled once, into <target>.objects, and the shared library is made of those
  # objects. The simulator links the same objects into its own executable
  # (tools/varnix-sim/CMakeLists.txt): a process that starts with the project's code inside it
  # resolves none of the project's symbols at load time (about 3 ms of every run, docs/packaging.md). <target>.objects links the .objects
  # of the project's libraries it depends on, for their headers and their outside libraries only:
  # the objects themselves go only into a target that links them directly.
  set(object_links)
  foreach(link ${ARG_LINK})
    if(TARGET ${link}.objects)
      list(APPEND object_links ${link}.objects)
    else()
      list(APPEND object_links ${link})
    endif()
  endforeach()
  add_library(${target}.objects OBJECT ${sources} ${headers})
  set_target_properties(${target}.objects PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_include_directories(${target}.objects PUBLIC "${PROJECT_SOURCE_DIR}/src")
  target_link_libraries(${target}.objects PUBLIC ${object_links} varnix_build_flags PRIVATE ${ARG_PRIVATE_LINK})

  add_library(${target} SHARED $<TARGET_OBJECTS:${target}.objects>)
  add_library(${ARG_ALIAS} ALIAS ${target})
  target_include_directories(${target} PUBLIC
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>"
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
  target_link_libraries(${target} PUBLIC ${ARG_LINK} varnix_build_flags PRIVATE ${ARG_PRIVATE_LINK})
  # Installed, the libraries find each other in their own directory.
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${target} EXPORT VarnixBaseTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endfunction()

# varnix_add_test(<target> SOURCES <files>... [LINK <libs>...] [FILTER <gtest filter>])
# A GoogleTest executable whose tests are registered with CTest one by one, so that each test
# runs in a process of its own (process-wide singletons start fresh for every test). FILTER
# registers only the tests that the GoogleTest filter expression selects.
function(varnix_add_test target)
  cmake_parse_arguments(ARG "" "FILTER" "SOURCES;LINK" ${ARGN})
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE ${ARG_LINK} GTest::gtest GTest::gmock varnix_build_flags)
  set(filter)
  if(ARG_FILTER)
    set(filter TEST_FILTER "${ARG_FILTER}")
  endif()
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 ${filter}
    PROPERTIES TIMEOUT 120)
endfunction()

# varnix_add_benchmark(<target> SOURCES <files>... [LINK <libs>...])
function(varnix_add_benchmark target)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE ${ARG_LINK} benchmark::benchmark varnix_build_flags)
endfunction()

# varnix_add_fuzzer(<target> SOURCES <files>... [LINK <libs>...])
# A libFuzzer target (the sources define LLVMFuzzerTestOneInput); only in the fuzz build.
function(varnix_add_fuzzer target)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${target} ${ARG_SOURCES})
  target_compile_options(${target} PRIVATE -fsanitize=fuzzer)
  target_link_options(${target} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(${target} PRIVATE ${ARG_LINK} varnix_build_flags)
endfunction()
