# Cross-build for 64-bit Windows.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TRIPLE x86_64-w64-mingw32)
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../tools/wine64")
