#include <algorithm>

#include "core/gray.h"
#include "kernels/tone/functions.h"

namespace vorel::kernels::VOREL_LEVEL {

void map_bytes(ConstDibView source, DibView result, const ComponentTable& table) {
  for (int y = 0; y < source.height(); ++y)
    std::ranges::transform(source.row(y), result.row(y).begin(), [&](uint8_t byte) { return table[byte]; });
}

void look_up_colors(ConstDibView source, DibView result, std::span<const Rgb, 256> colors) {
  for (int y = 0; y < source.height(); ++y) {
    uint8_t* pixel = result.row(y).data();
    for (const uint8_t index : source.row(y)) {
      const Rgb color = colors[index];
      *pixel++ = color.blue;
      *pixel++ = color.green;
      *pixel++ = color.red;
    }
  }
}

void gray_rows(ConstDibView source, DibView result, GrayRule rule) {
  const auto convert = [&](auto gray) {
    for (int y = 0; y < source.height(); ++y) {
      const uint8_t* from = source.row(y).data();
      for (uint8_t& to : result.row(y)) {
        to = gray(Rgb{from[0], from[1], from[2], 0});
        from += 3;
      }
    }
  };
  if (rule == GrayRule::kMean)
    convert([](Rgb color) { return mean_of(color); });
  else
    convert([](Rgb color) { return weighted_gray_of(color); });
}

}  // namespace vorel::kernels::VOREL_LEVEL
