# Run by CPack on the staged files before it builds the Debian packages: gives each package what
# Debian expects beyond the install. The libraries lie in the system's search path there, so the
# RPATH an install into any prefix needs goes; each package gets a copyright file and a changelog.
file(GLOB components LIST_DIRECTORIES true "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*")
foreach(component IN LISTS components)
  if(NOT IS_DIRECTORY "${component}")
    continue()
  endif()
  get_filename_component(name "${component}" NAME)
  string(TOUPPER "${name}" upper)
  set(package "${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
  if(package STREQUAL "")
    message(FATAL_ERROR "DebianStage: no package name for the component '${name}'")
  endif()
  set(root "${component}${CPACK_PACKAGING_INSTALL_PREFIX}")

  file(GLOB_RECURSE files LIST_DIRECTORIES false "${root}/bin/*" "${root}/lib/*.so*")
  foreach(file IN LISTS files)
    if(NOT IS_SYMLINK "${file}")
      file(RPATH_REMOVE FILE "${file}")
    endif()
  endforeach()

  set(doc "${root}/share/doc/${package}")
  file(MAKE_DIRECTORY "${doc}")
  file(COPY_FILE "${CPACK_VARNIX_SOURCE_DIR}/cmake/debian/copyright" "${doc}/copyright")
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC) # SOURCE_DATE_EPOCH if set
  file(WRITE "${doc}/changelog.Debian"
    "${package} (${CPACK_VARNIX_DEB_VERSION}) unstable; urgency=medium\n\n"
    "  * Built with CPack from the VarnixBase sources, version ${CPACK_PACKAGE_VERSION}.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  execute_process(COMMAND gzip -9nf "${doc}/changelog.Debian" RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "DebianStage: gzip failed on ${doc}/changelog.Debian")
  endif()
endforeach()
