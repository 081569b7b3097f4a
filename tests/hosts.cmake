# Tests through real script hosts, and those that need the native service.
set(quorvex_bits 32)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(quorvex_bits 64)
endif()
set(QUORVEX_SERVICE ${PROJECT_SOURCE_DIR}/build/host/service/quorvex-service CACHE FILEPATH "Native service for the tests")

# quorvex_host_test(NAME [SERVICE] COMMAND...): a registered test; with SERVICE it runs while the service answers.
function(quorvex_host_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "SERVICE" "" "")
  set(command ${arg_UNPARSED_ARGUMENTS})
  if(arg_SERVICE)
    set(command ${CMAKE_CURRENT_SOURCE_DIR}/with_service ${QUORVEX_SERVICE} ${command})
  endif()
  add_test(NAME ${name} COMMAND ${command})
  set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED wine ENVIRONMENT "${QUORVEX_WINE_ENVIRONMENT}"
    SKIP_RETURN_CODE 77 TIMEOUT 300)
endfunction()

# quorvex_script_test(NAME SCRIPT): a script of tests/scripts in the host of this preset's bitness.
function(quorvex_script_test name script)
  quorvex_host_test(${name} ${CMAKE_CURRENT_SOURCE_DIR}/run_script ${quorvex_bits}
    ${CMAKE_CURRENT_SOURCE_DIR}/scripts/${script})
endfunction()

quorvex_script_test(vbscript late_bound.vbs)
quorvex_script_test(jscript late_bound.js)

# Web mode beside local mode, early bound: all addresses of the sample data.
quorvex_sources(modes_sources ${CMAKE_CURRENT_SOURCE_DIR}/modes)
add_executable(modes_test ${modes_sources} com/host.cpp com/catalogue.cpp)
target_link_libraries(modes_test PRIVATE quorvex_testing quorvex_com crypt32)
target_include_directories(modes_test PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
quorvex_warnings(modes_test)
add_dependencies(modes_test QuorvexLookup)
quorvex_host_test(modes SERVICE ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:modes_test>)
quorvex_host_test(examples SERVICE ${CMAKE_CURRENT_SOURCE_DIR}/run_examples ${quorvex_bits}
  ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:example_early_bound>)

# 32-bit only: elsewhere exceptions do not depend on registered tables.
if(quorvex_bits EQUAL 32)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libgcc_s_dw2-1.dll OUTPUT_VARIABLE shared_runtime
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  get_filename_component(shared_runtime_folder ${shared_runtime} DIRECTORY)
  add_executable(preloaded_host com_hosts/preloaded_host.cpp)
  target_link_libraries(preloaded_host PRIVATE quorvex_com ole32 oleaut32 uuid)
  target_link_options(preloaded_host PRIVATE -municode)
  add_dependencies(preloaded_host QuorvexLookup)
  quorvex_host_test(preloaded_host env
    "WINEPATH=Z:${shared_runtime_folder}\;Z:/usr/i686-w64-mingw32/lib"
    ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:preloaded_host> libgcc_s_dw2-1.dll
    "Z:$<TARGET_FILE:QuorvexLookup>")
endif()
