# 32-bit Windows.
set(VOREL_MACHINE i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)

# SSE arithmetic rounds as the 64-bit build does, which the x87 unit does not. Hosts built by older compilers keep their stacks
# aligned to 4 bytes only, so every function that needs more aligns its own.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
