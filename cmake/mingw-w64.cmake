# Cross build for Windows on the machine VOREL_MACHINE, which the including toolchain file names; the results run here under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${VOREL_MACHINE})
set(CMAKE_C_COMPILER ${VOREL_MACHINE}-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER ${VOREL_MACHINE}-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER ${VOREL_MACHINE}-w64-mingw32-windres)

# tools/get-codecs.sh makes the second folder, a link; unresolved, so that a build follows when the link changes.
get_filename_component(VOREL_CODECS ${CMAKE_CURRENT_LIST_DIR}/../build/codecs-${VOREL_MACHINE} ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH /usr/${VOREL_MACHINE}-w64-mingw32 ${VOREL_CODECS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/run-wine.sh)
