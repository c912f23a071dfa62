# The simulator served over Modbus TCP, driven by clients nobody here wrote (python3-pymodbus,
# mbpoll) through modbus_clients.py. A scenario whose client is missing is skipped (status 77) with
# the package to install.
find_program(VARNIX_DEBIAN_PYTHON3 python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NOT VARNIX_DEBIAN_PYTHON3)
  find_program(VARNIX_DEBIAN_PYTHON3 python3)
endif()
if(NOT VARNIX_DEBIAN_PYTHON3)
  message(STATUS "python3 not found: the Modbus client tests are not registered")
  return()
endif()
foreach(scenario command-line tank-pymodbus tank-mbpoll types-pymodbus eight-clients bad-inputs)
  add_test(NAME VarnixSimModbus.${scenario}
    COMMAND ${VARNIX_DEBIAN_PYTHON3} ${CMAKE_CURRENT_LIST_DIR}/modbus_clients.py
      --sim $<TARGET_FILE:varnix-sim> --root ${PROJECT_SOURCE_DIR} ${scenario})
  set_tests_properties(VarnixSimModbus.${scenario} PROPERTIES TIMEOUT 120 SKIP_RETURN_CODE 77)
endforeach()
