# Cross-compiles for 64-bit Windows with Debian's g++-mingw-w64-x86-64-posix; tests run under Wine where it is there.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)  # the test framework's project asks for one
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

find_program(WINE NAMES wine64 PATHS /usr/lib/wine)
find_program(WINESERVER NAMES wineserver64 PATHS /usr/lib/wine)
if(WINE AND WINESERVER)
  set(CMAKE_CROSSCOMPILING_EMULATOR
    ${CMAKE_CURRENT_LIST_DIR}/run_in_wine.sh ${WINE} ${WINESERVER} ${CMAKE_BINARY_DIR}/wine)
endif()
