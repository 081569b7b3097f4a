# Warnings of the project's own code; they are errors on every preset.
set(QUORVEX_WARNINGS
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Woverloaded-virtual -Wformat=2 -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # gcc 12 sees overlapping copies inside std::string that cannot be (its bug 105651).
  # It also takes the source files of a unity batch for headers, whose types must not depend on anonymous namespaces.
  list(APPEND QUORVEX_WARNINGS -Wsuggest-override -Wno-restrict -Wno-subobject-linkage)
  # Under the sanitizers gcc 12 takes the members of std::regex and std::function for uninitialised.
  if(QUORVEX_SANITIZE)
    list(APPEND QUORVEX_WARNINGS -Wno-maybe-uninitialized)
  endif()
endif()

function(quorvex_warnings target)
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:${QUORVEX_WARNINGS}>)
endfunction()
