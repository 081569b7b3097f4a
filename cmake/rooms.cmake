# A file's name decides where it is built: name_win.cpp on Windows only, name_posix.cpp natively only, others on both.
#
# quorvex_sources(OUT FOLDER...): the .cpp files directly in the folders that this platform builds.
function(quorvex_sources out)
  set(found)
  foreach(folder IN LISTS ARGN)
    file(GLOB files CONFIGURE_DEPENDS ${folder}/*.cpp)
    list(APPEND found ${files})
  endforeach()
  if(WIN32)
    list(FILTER found EXCLUDE REGEX "_posix\\.cpp$")
  else()
    list(FILTER found EXCLUDE REGEX "_win\\.cpp$")
  endif()
  set(${out} ${found} PARENT_SCOPE)
endfunction()
