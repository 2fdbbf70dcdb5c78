# 64-bit Windows.
set(VOREL_MACHINE x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)

# Stacks are aligned to 16 bytes there, and GCC does not align wider vectors on them any further: moves must not rely on it.
set(CMAKE_C_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
set(CMAKE_CXX_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
