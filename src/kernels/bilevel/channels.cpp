#include "kernels/bilevel/channels.h"

#include <algorithm>

#include "core/gray.h"
#include "core/pixel.h"

namespace vorel::kernels::VOREL_LEVEL {

Channels::Channels(ConstDibView picture, std::span<const Rgb> colors) : picture_(picture), colors_(colors) {
  planes_.fill(std::vector<uint8_t>(plane_width(picture.depth(), picture.width())));
  std::ranges::transform(colors, luminances_.begin(), luminance_of);
}

void Channels::read(int y) {
  const uint8_t* const row = picture_.row(y).data();
  const auto put = [&](size_t x, Rgb color) {
    planes_[0][x] = color.red;
    planes_[1][x] = color.green;
    planes_[2][x] = color.blue;
  };
  if (picture_.depth() == 24) {
    for (size_t x = 0; x < static_cast<size_t>(picture_.width()); ++x)
      put(x, {row[3 * x], row[3 * x + 1], row[3 * x + 2], 0});
  } else if (picture_.depth() == 8) {
    for (size_t x = 0; x < width(); ++x) put(x, colors_[row[x]]);
  } else {
    for (size_t x = 0; x < width(); ++x) put(x, colors_[Pixel<4>::load(row, static_cast<int>(x))]);
  }
}

void Channels::read_luminance(int y) {
  const uint8_t* const row = picture_.row(y).data();
  std::vector<uint8_t>& levels = planes_[0];
  if (picture_.depth() == 24) {
    for (size_t x = 0; x < static_cast<size_t>(picture_.width()); ++x)
      levels[x] = luminance_of(Rgb{row[3 * x], row[3 * x + 1], row[3 * x + 2], 0});
  } else if (picture_.depth() == 8) {
    for (size_t x = 0; x < width(); ++x) levels[x] = luminances_[row[x]];
  } else {
    for (size_t x = 0; x < width(); ++x) levels[x] = luminances_[Pixel<4>::load(row, static_cast<int>(x))];
  }
}

}  // namespace vorel::kernels::VOREL_LEVEL
