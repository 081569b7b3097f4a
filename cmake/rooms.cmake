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

# quorvex_room(NAME [FOLDERS SUBFOLDER...] [LINK TARGET...]): a room of src/ as the target quorvex_NAME. Its sources find
# "NAME/header.h" and the headers of the rooms it links, and no others: each room has an include root of its own, a
# link to its folder in the build tree. So an include that points upwards does not compile.
function(quorvex_room name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FOLDERS;LINK")
  set(folder ${PROJECT_SOURCE_DIR}/src/${name})
  set(root ${PROJECT_BINARY_DIR}/rooms/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${folder} ${root}/${name} SYMBOLIC)
  list(TRANSFORM arg_FOLDERS PREPEND ${folder}/)
  quorvex_sources(sources ${folder} ${arg_FOLDERS})
  if(sources)
    add_library(quorvex_${name} STATIC ${sources})
    target_include_directories(quorvex_${name} PUBLIC ${root})
    target_link_libraries(quorvex_${name} PUBLIC ${arg_LINK})
    quorvex_warnings(quorvex_${name})
  else()
    add_library(quorvex_${name} INTERFACE)
    target_include_directories(quorvex_${name} INTERFACE ${root})
    target_link_libraries(quorvex_${name} INTERFACE ${arg_LINK})
  endif()
endfunction()

# quorvex_ships(TARGET): a DLL or program that is given to users. It carries no symbols, and the tests examine it as a file.
function(quorvex_ships target)
  target_link_options(${target} PRIVATE -s)
  set_property(GLOBAL APPEND PROPERTY QUORVEX_SHIPPED ${target})
endfunction()
