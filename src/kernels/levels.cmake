# Compiles kernels once per instruction set, each into the namespace VOREL_LEVEL, and adds them to the core. The lowest level comes
# first: of inline functions that several levels instantiate, linkers keep the first.
set(VOREL_LEVELS sse2 sse41 avx2 avx512)
set(VOREL_FLAGS_sse2 -msse2)
set(VOREL_FLAGS_sse41 -msse4.1 -mpopcnt)
set(VOREL_FLAGS_avx2 -mavx2 -mbmi -mbmi2 -mpopcnt)
set(VOREL_FLAGS_avx512 ${VOREL_FLAGS_avx2} -mavx512f -mavx512bw -mavx512dq -mavx512vl -mavx512vbmi -mprefer-vector-width=512)

function(vorel_kernels)
  foreach(level ${VOREL_LEVELS})
    add_library(vorel_kernels_${level} OBJECT ${ARGN})
    target_include_directories(vorel_kernels_${level} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
    target_compile_definitions(vorel_kernels_${level} PRIVATE VOREL_LEVEL=${level})
    # Vectors wider than the level's registers are passed only within the level, so the calling convention does not matter.
    target_compile_options(vorel_kernels_${level} PRIVATE ${VOREL_FLAGS_${level}} -Wno-psabi)
    target_link_libraries(vorel_kernels_${level} PRIVATE vorel_warnings)
    target_sources(vorel_core PRIVATE $<TARGET_OBJECTS:vorel_kernels_${level}>)
  endforeach()
endfunction()
