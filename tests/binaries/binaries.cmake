# What ships is examined as files: Wine forgives what Windows does not. Targets add themselves with quorvex_ships.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
get_property(shipped GLOBAL PROPERTY QUORVEX_SHIPPED)
set(shipped_files)
foreach(target IN LISTS shipped)
  list(APPEND shipped_files $<TARGET_FILE:${target}>)
endforeach()
set(binaries ${CMAKE_CURRENT_SOURCE_DIR}/binaries)

add_test(NAME binaries COMMAND ${Python3_EXECUTABLE} ${binaries}/check.py ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR}
  ${PROJECT_VERSION} ${shipped_files})
# The DLL is compiled anew in another folder: 100 seconds of processor time at first, then only what has changed.
add_test(NAME reproducible COMMAND ${binaries}/reproduce ${PROJECT_SOURCE_DIR} win${quorvex_bits}
  $<TARGET_FILE:QuorvexLookup>)
set_tests_properties(reproducible PROPERTIES TIMEOUT 1500)
# The DLL's own imports and those it makes while it works, with every DLL switched off that Windows 7 does not have and
# that Wine can do without.
quorvex_host_test(clean_windows ${binaries}/clean_windows ${quorvex_bits} ${CMAKE_CURRENT_SOURCE_DIR}/run_script
  ${CMAKE_CURRENT_SOURCE_DIR}/scripts/late_bound.vbs)
