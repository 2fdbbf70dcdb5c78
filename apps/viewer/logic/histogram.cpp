#include "viewer/logic/histogram.h"

#include <algorithm>
#include <cmath>

namespace vorel::viewer {

std::vector<int> bars_of(std::span<const uint64_t> counts, int width, int height) {
  std::vector<uint64_t> sums(static_cast<size_t>(std::max(width, 0)));
  for (size_t i = 0; i < sums.size(); ++i) {
    const size_t first = i * counts.size() / sums.size(), end = std::max((i + 1) * counts.size() / sums.size(), first + 1);
    for (size_t level = first; level < end; ++level) sums[i] = std::max(sums[i], counts[level]);
  }
  const uint64_t most = sums.empty() ? 0 : std::ranges::max(sums);
  std::vector<int> bars;
  for (const uint64_t sum : sums) {
    const double part = most == 0 ? 0 : std::sqrt(static_cast<double>(sum) / static_cast<double>(most));
    bars.push_back(sum == 0 ? 0 : std::max(1, static_cast<int>(std::lround(part * height))));
  }
  return bars;
}

}  // namespace vorel::viewer
