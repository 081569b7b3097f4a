# The command-line program as users run it: the page with its sessions, then faults. Natively, and the Windows programs
# under Wine.
set(page ${CMAKE_CURRENT_SOURCE_DIR}/cli/run_page ${PROJECT_SOURCE_DIR}/docs/command-line.md)
set(faults ${CMAKE_CURRENT_SOURCE_DIR}/cli/program_test.py)
if(WIN32)
  set(service ${PROJECT_SOURCE_DIR}/build/host/service/quorvex-service)
  set(program ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:quorvex>)
else()
  set(service $<TARGET_FILE:quorvex-service>)
  set(program $<TARGET_FILE:quorvex>)
endif()
add_test(NAME command-line-page COMMAND ${page} ${service} ${program})
add_test(NAME command-line-faults COMMAND ${faults} ${service} ${program})
set_tests_properties(command-line-page command-line-faults PROPERTIES SKIP_RETURN_CODE 77)
if(WIN32)
  set_tests_properties(command-line-page command-line-faults PROPERTIES FIXTURES_REQUIRED wine
    ENVIRONMENT "${QUORVEX_WINE_ENVIRONMENT}")
endif()
