# Installation and packaging. Three install components, one Debian package each:
#   runtime      the shared libraries                              -> libvarnixbase1
#   development  headers, CMake package, pkg-config file varnixbase  -> libvarnixbase-dev
#   tools        the simulator, its man page, the document schema,
#                the examples                                      -> varnixbase-tools
# `cmake --install build --prefix DIR` installs all three; scripts/package builds the packages.

# Headers with the same paths as under src/.
install(DIRECTORY src/Zon src/VarnixBase
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT development
        FILES_MATCHING PATTERN "*.hpp")

# CMake package: find_package(VarnixBase CONFIG).
install(EXPORT VarnixBaseTargets
        NAMESPACE VarnixBase::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VarnixBase
        FILE VarnixBaseTargets.cmake
        COMPONENT development)
include(CMakePackageConfigHelpers)
configure_package_config_file(cmake/VarnixBaseConfig.cmake.in
  "${CMAKE_CURRENT_BINARY_DIR}/VarnixBaseConfig.cmake"
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VarnixBase)
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/VarnixBaseConfigVersion.cmake"
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/VarnixBaseConfig.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/VarnixBaseConfigVersion.cmake"
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VarnixBase
        COMPONENT development)

# pkg-config file varnixbase.pc. Its prefix is the one the install goes to (`--prefix`, or /usr in
# the packages), so it is written at install time; the rest is filled in here.
set(PREFIX "@PREFIX@")
configure_file(cmake/varnixbase.pc.in "${CMAKE_CURRENT_BINARY_DIR}/varnixbase.pc.in" @ONLY)
unset(PREFIX)
install(CODE "
  file(READ \"${CMAKE_CURRENT_BINARY_DIR}/varnixbase.pc.in\" text)
  string(REPLACE \"@PREFIX@\" \"\${CMAKE_INSTALL_PREFIX}\" text \"\${text}\")
  set(pc \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig/varnixbase.pc\")
  message(STATUS \"Installing: \${pc}\")
  file(WRITE \"\${pc}\" \"\${text}\")
  " COMPONENT development)

# The schema of .prog.config documents, and the examples; the simulator finds the schema here.
install(FILES schema/prog-config.xsd DESTINATION ${CMAKE_INSTALL_DATADIR}/varnixbase COMPONENT tools)
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/varnixbase/examples COMPONENT tools)

# The simulator's man page, made by help2man from its own --help-all and --version. Not in the
# sanitizer and fuzz builds, whose simulator is not for installing.
if(TARGET varnix-sim AND NOT VARNIX_SANITIZE AND NOT VARNIX_BUILD_FUZZ)
  find_program(HELP2MAN_PROGRAM help2man)
  find_program(GZIP_PROGRAM gzip)
  if(HELP2MAN_PROGRAM AND GZIP_PROGRAM)
    set(man "${CMAKE_CURRENT_BINARY_DIR}/man/varnix-sim.1")
    add_custom_command(OUTPUT "${man}.gz"
      COMMAND ${CMAKE_COMMAND} -E make_directory "${CMAKE_CURRENT_BINARY_DIR}/man"
      COMMAND ${HELP2MAN_PROGRAM} --no-info --section=1 --help-option=--help-all --version-option=--version
              "--name=plays the controller for a configurable program on a PC"
              --include=${PROJECT_SOURCE_DIR}/cmake/varnix-sim.h2m
              --output=${man} $<TARGET_FILE:varnix-sim>
      COMMAND ${GZIP_PROGRAM} -9nf "${man}"
      DEPENDS varnix-sim "${PROJECT_SOURCE_DIR}/cmake/varnix-sim.h2m"
      COMMENT "Man page of varnix-sim"
      VERBATIM)
    add_custom_target(varnix-sim-man ALL DEPENDS "${man}.gz")
    install(FILES "${man}.gz" DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools OPTIONAL)
  else()
    message(STATUS "help2man or gzip not found: no man page for varnix-sim (scripts/setup installs them)")
  endif()
endif()

# Debian packages (cpack -G DEB, through scripts/package).
set(VARNIX_PACKAGE_CONTACT "VarnixBase developers <varnixbase@example.org>"
    CACHE STRING "Maintainer of the Debian packages: NAME <MAIL>")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME varnixbase)
set(CPACK_PACKAGE_VENDOR "VarnixBase developers")
set(CPACK_PACKAGE_CONTACT "${VARNIX_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# dpkg-shlibdeps meets the project's own libraries in the build tree; the packages that ship them
# are named as dependencies below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    "${CMAKE_CURRENT_BINARY_DIR}/src/Zon" "${CMAKE_CURRENT_BINARY_DIR}/src/VarnixBase")
set(varnix_deb_version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvarnixbase1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON) # a shlibs file where there are shared libraries
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
# CPack formats the descriptions: the first line is the synopsis, an empty line parts paragraphs.
set(varnix_deb_about "VarnixBase builds a controller program from a .prog.config document:
typed ports, connectors that copy and scale values between them every task
cycle, parameters and quality providers.")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "configurable programs for industrial controllers
${varnix_deb_about}

This package holds the shared libraries libVarnixBase.Core, libZon.Platform
(the host platform that provides the controller's services on a PC) and
libVarnixBase.Sim (the simulation engine, for an application's tests).")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvarnixbase-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libvarnixbase1 (= ${varnix_deb_version}), libxml2-dev, libfmt-dev, libboost-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "configurable programs for industrial controllers - development files
${varnix_deb_about}

This package holds the headers, the CMake package (find_package(VarnixBase))
and the pkg-config file varnixbase.pc.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME varnixbase-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
# The simulator holds the project's code itself (tools/varnix-sim/CMakeLists.txt): it needs only
# what dpkg-shlibdeps finds, not libvarnixbase1.
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "graphviz, libxml2-utils")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "configurable programs for industrial controllers - simulator
varnix-sim plays the controller for a configurable program on a PC: it builds
the program from its .prog.config document, runs task cycles with stimuli and
traces the ports, checks a document and draws it as a graph.

This package also holds the XML schema of .prog.config documents and the
examples.")

# The staged files get what a Debian package needs beyond the install: no RPATH, a copyright
# file and a changelog.
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/DebianStage.cmake")
set(CPACK_VARNIX_SOURCE_DIR "${PROJECT_SOURCE_DIR}")
set(CPACK_VARNIX_DEB_VERSION "${varnix_deb_version}")
include(CPack)
