# Programs that others wrote, as clients of the DLL: Python with pywin32, comtypes and pywinauto. What fetches them belongs to the
# tests, so that a wrong checksum is a failure and a registry that cannot be reached is a skipped test with its reason.
set(quorvex_clients ${CMAKE_CURRENT_SOURCE_DIR}/clients)
add_test(NAME clients_fetch COMMAND ${quorvex_clients}/fetch ${quorvex_bits})
set_tests_properties(clients_fetch PROPERTIES FIXTURES_SETUP clients SKIP_RETURN_CODE 77 TIMEOUT 500)

# quorvex_client_test(NAME COMMAND...): a test of a fetched client, while the service answers.
function(quorvex_client_test name)
  quorvex_host_test(${name} SERVICE ${ARGN})
  set_property(TEST ${name} APPEND PROPERTY FIXTURES_REQUIRED clients)
endfunction()

quorvex_client_test(python_members ${quorvex_clients}/run ${quorvex_bits} ${quorvex_clients}/members.py)
quorvex_client_test(python_waiting ${quorvex_clients}/run ${quorvex_bits} ${quorvex_clients}/waiting.py)
quorvex_client_test(python_ending ${quorvex_clients}/run ${quorvex_bits} ${quorvex_clients}/ending.py)

quorvex_client_test(python_sample ${quorvex_clients}/run_samples ${quorvex_bits} python)
quorvex_host_test(asp_sample SERVICE ${quorvex_clients}/run_samples ${quorvex_bits} asp)
if(quorvex_bits EQUAL 64)
  add_test(NAME csharp COMMAND ${quorvex_clients}/compile_csharp)
  set_tests_properties(csharp PROPERTIES SKIP_RETURN_CODE 77)
endif()

# The code blocks of README.md and docs: run, compiled or at least checked.
set(quorvex_block_includes "$<JOIN:$<TARGET_PROPERTY:quorvex_com,INTERFACE_INCLUDE_DIRECTORIES>,:>")
quorvex_client_test(documents python3 ${quorvex_clients}/blocks.py ${quorvex_bits} ${CMAKE_CXX_COMPILER}
  ${quorvex_block_includes}:${PROJECT_SOURCE_DIR}/jet/include:${PROJECT_SOURCE_DIR}/jet ${PROJECT_SOURCE_DIR}/examples/data)
