#include "kernels/tone/linear.h"

#include <limits>

namespace vorel::kernels {
namespace {

// The offset with which a factor gives a table, or on which side of the factor another one may.
struct Trial {
  std::optional<int> offset;
  bool needs_steeper;
};

// Each entry limits the offset from below and above; entries at the ends of the range limit it from one side.
Trial try_factor(const ComponentTable& table, int factor, int shift) {
  int least = std::numeric_limits<int>::min(), limit = std::numeric_limits<int>::max(), least_at = 0, limit_at = 0;
  for (int i = 0; i < 256; ++i) {
    const int level = table[static_cast<size_t>(i)], rest = (level << shift) - i * factor, next = rest + (1 << shift);
    if (level > 0 && rest > least) {
      least = rest;
      least_at = i;
    }
    if (level < 255 && next < limit) {
      limit = next;
      limit_at = i;
    }
  }
  if (least < limit) return {least == std::numeric_limits<int>::min() ? limit - 1 : least, false};
  return {std::nullopt, least_at > limit_at};
}

}  // namespace

std::optional<LinearTable> LinearTable::of(const ComponentTable& table) {
  // The finest shift whose factors reach steep enough lines, then coarser ones for steeper lines.
  for (const int shift : {14, 11, 8}) {
    int first = std::numeric_limits<int16_t>::min(), last = std::numeric_limits<int16_t>::max();
    while (first <= last) {
      const int factor = first + (last - first) / 2;
      const Trial trial = try_factor(table, factor, shift);
      if (trial.offset) return LinearTable{factor, *trial.offset, shift};
      if (trial.needs_steeper)
        first = factor + 1;
      else
        last = factor - 1;
    }
  }
  return std::nullopt;
}

}  // namespace vorel::kernels
