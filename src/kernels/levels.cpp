#include "kernels/levels.h"

#include <algorithm>
#include <cstdlib>

namespace vorel {

std::string_view name_of(CpuLevel level) {
  switch (level) {
    case CpuLevel::kSse2: return "sse2";
    case CpuLevel::kSse41: return "sse41";
    case CpuLevel::kAvx2: return "avx2";
    case CpuLevel::kAvx512: return "avx512";
  }
  return {};
}

CpuLevel highest_cpu_level() {
  __builtin_cpu_init();
  const bool has_sse41 = __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("popcnt");
  const bool has_avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
  const bool has_avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                          __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                          __builtin_cpu_supports("avx512vbmi");
  if (!has_sse41) return CpuLevel::kSse2;
  if (!has_avx2) return CpuLevel::kSse41;
  return has_avx512 ? CpuLevel::kAvx512 : CpuLevel::kAvx2;
}

CpuLevel cpu_level() {
  static const CpuLevel level = [] {
    const CpuLevel highest = highest_cpu_level();
    const char* const asked = std::getenv("VOREL_CPU_LEVEL");
    const auto* const named = asked == nullptr ? nullptr : std::ranges::find(kCpuLevels, std::string_view(asked), name_of);
    return named == nullptr || named == std::end(kCpuLevels) ? highest : std::min(*named, highest);
  }();
  return level;
}

}  // namespace vorel
