// Instruction sets. Each family of kernels is compiled once per level, into a namespace of the level's name, and ends in one
// constant table of functions. levels.cpp chooses the level; tables.cpp has the accessors of the tables.
#pragma once

#include <string_view>

namespace vorel {

// Each level includes the ones before it. Namespaces, the build's object libraries and the environment variable use the same
// names.
enum class CpuLevel { kSse2, kSse41, kAvx2, kAvx512 };
inline constexpr CpuLevel kCpuLevels[] = {CpuLevel::kSse2, CpuLevel::kSse41, CpuLevel::kAvx2, CpuLevel::kAvx512};

// "sse2", "sse41", "avx2", "avx512".
std::string_view name_of(CpuLevel level);

// The highest level that this machine and its system support.
CpuLevel highest_cpu_level();

// The level that the library uses: the highest one, or a lower one that the environment variable VOREL_CPU_LEVEL names. Decided
// once per process.
CpuLevel cpu_level();

}  // namespace vorel
