#include "kernels/levels.h"

#include <algorithm>
#include <cstdlib>

namespace vorel {

std::string_view name_of(CpuLevel level) {
  switch (level) {
    case CpuLevel::kSse2: return "sse2";
    case CpuLevel::kSse41: return "sse41";
    case CpuLevel::kAvx2: return "avx2";
  }
  return {};
}

CpuLevel highest_cpu_level() {
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2"))
    return CpuLevel::kAvx2;
  if (__builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("popcnt")) return CpuLevel::kSse41;
  return CpuLevel::kSse2;
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
