# Cross build for 32-bit Windows; what it builds runs here under 32-bit Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)

# tools/get-codecs.sh makes the second folder, a link; unresolved, so that a build follows when the link changes.
get_filename_component(VOREL_CODECS ${CMAKE_CURRENT_LIST_DIR}/../build/codecs-i686 ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32 ${VOREL_CODECS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# SSE arithmetic rounds as the 64-bit build does, which the x87 unit does not. Hosts built by older compilers keep their stacks
# aligned to 4 bytes only, so every function that needs more aligns its own.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/run-wine.sh)
