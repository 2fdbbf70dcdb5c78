#include "kernels/tone/linear.h"

#include <algorithm>
#include <limits>

namespace vorel::kernels {
namespace {

// The offset with which a factor reproduces the table; without one, whether the factor must be steeper.
struct Trial {
  std::optional<int> offset;
  bool needs_steeper;
};

// Each entry bounds the offset from below and above; entries at a limit of the table bound it from one side.
Trial try_factor(const ComponentTable& table, int factor, int shift, uint8_t least, uint8_t most) {
  constexpr int kNone = std::numeric_limits<int>::min(), kNoEnd = std::numeric_limits<int>::max();
  int first = kNone, end = kNoEnd, first_at = 0, end_at = 0;
  for (int i = 0; i < 256; ++i) {
    const int level = table[static_cast<size_t>(i)], rest = (level << shift) - i * factor, next = rest + (1 << shift);
    if (level > least && rest > first) {
      first = rest;
      first_at = i;
    }
    if (level < most && next < end) {
      end = next;
      end_at = i;
    }
  }
  if (first < end) return {first != kNone ? first : end != kNoEnd ? end - 1 : 0, false};
  return {std::nullopt, first_at > end_at};
}

}  // namespace

std::optional<LinearTable> LinearTable::of(const ComponentTable& table) {
  const auto [least, most] = std::ranges::minmax(table);
  // The finest shift whose factors reach steep enough lines, then coarser ones for steeper lines.
  for (const int shift : {14, 11, 8}) {
    int first = std::numeric_limits<int16_t>::min(), last = std::numeric_limits<int16_t>::max();
    while (first <= last) {
      const int factor = first + (last - first) / 2;
      const Trial trial = try_factor(table, factor, shift, least, most);
      if (trial.offset) return LinearTable{factor, *trial.offset, shift, least, most};
      if (trial.needs_steeper)
        first = factor + 1;
      else
        last = factor - 1;
    }
  }
  return std::nullopt;
}

}  // namespace vorel::kernels
