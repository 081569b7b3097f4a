# Cross-build for 32-bit Windows.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(TRIPLE i686-w64-mingw32)
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../tools/wine32")
