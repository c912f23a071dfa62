# Tests of the installed project (the prefix PackageConsumer stages) and of its Debian packages.
set(staged "${CMAKE_CURRENT_BINARY_DIR}/package-test/prefix")

# pkg-config: a consumer compiled with `pkg-config --cflags --libs varnixbase` runs.
add_test(NAME PkgConfigConsumer
  COMMAND ${CMAKE_COMMAND} -DPREFIX=${staged} -DSOURCE_DIR=${CMAKE_CURRENT_LIST_DIR}
    -DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/pkg-config-test -DSANITIZE=${VARNIX_SANITIZE}
    -P ${CMAKE_CURRENT_LIST_DIR}/RunPkgConfigConsumer.cmake)
set_tests_properties(PkgConfigConsumer PROPERTIES TIMEOUT 300 FIXTURES_REQUIRED VarnixPackage)

if(TARGET varnix-sim)
  # The installed simulator runs from its prefix without LD_LIBRARY_PATH.
  add_test(NAME InstalledSimulator
    COMMAND ${CMAKE_COMMAND} -DPREFIX=${staged} -DVERSION=${PROJECT_VERSION}
      -P ${CMAKE_CURRENT_LIST_DIR}/RunInstalledSimulator.cmake)
  set_tests_properties(InstalledSimulator PROPERTIES TIMEOUT 300 FIXTURES_REQUIRED VarnixPackage)
endif()

# The Debian packages, made from this build; not from the sanitizer or fuzz builds, which are not
# for shipping.
if(TARGET varnix-sim AND NOT VARNIX_SANITIZE AND NOT VARNIX_BUILD_FUZZ)
  add_test(NAME DebianPackages
    COMMAND ${CMAKE_COMMAND} -DBUILD_DIR=${PROJECT_BINARY_DIR} -DSOURCE_DIR=${CMAKE_CURRENT_LIST_DIR}
      -DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/debian-test -DGENERATOR=${CMAKE_GENERATOR}
      -DVERSION=${PROJECT_VERSION}
      -P ${CMAKE_CURRENT_LIST_DIR}/RunDebianPackages.cmake)
  set_tests_properties(DebianPackages PROPERTIES TIMEOUT 900 RUN_SERIAL TRUE SKIP_REGULAR_EXPRESSION "SKIPPED: ")
endif()
