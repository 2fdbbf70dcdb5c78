// Parts of a picture's rows as planes of samples.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

#include "core/gray.h"
#include "core/pixel.h"
#include "core/view.h"

namespace vorel::kernels::VOREL_LEVEL {

// Samples of a picture of 4, 8 or 24 bits. Rows are complete in memory, padding included; at 24 bits the bytes behind the
// last pixel are 0, and so are all bytes of rows behind the last one. `colors` has 16 or 256 entries below 24 bits.
class Samples {
 public:
  Samples(ConstDibView picture, std::span<const Rgb> colors) : picture_(picture) {
    for (size_t i = 0; i < colors.size(); ++i) {
      components_[0][i] = colors[i].red;
      components_[1][i] = colors[i].green;
      components_[2][i] = colors[i].blue;
      luminances_[i] = luminance_of(colors[i]);
      is_ramp_ = is_ramp_ && luminances_[i] == i;
    }
  }

  // The luminance of `count` pixels from x on.
  void read(int y, int x, int count, uint8_t* (&to)[1]) const {
    if (y >= picture_.height()) return static_cast<void>(std::memset(to[0], luminances_[0], static_cast<size_t>(count)));
    const uint8_t* const row = picture_.row(y).data();
    if (picture_.depth() == 8 && is_ramp_) return static_cast<void>(std::memcpy(to[0], row + x, static_cast<size_t>(count)));
    if (picture_.depth() != 24) return look_up(luminances_, row, x, count, to[0]);
    uint8_t* __restrict out = to[0];
    const uint8_t* pixel = row + size_t{3} * static_cast<size_t>(x);
    const int available = std::clamp(picture_.width() - x, 0, count);
    for (int i = 0; i < available; ++i, pixel += 3) out[i] = luminance_of({pixel[0], pixel[1], pixel[2], 0});
    for (int i = available; i < count; ++i) out[i] = 0;
  }

  // Red, green and blue.
  void read(int y, int x, int count, uint8_t* (&to)[3]) const {
    if (y >= picture_.height()) {
      for (size_t channel = 0; channel < 3; ++channel)
        std::memset(to[channel], components_[channel][0], static_cast<size_t>(count));
      return;
    }
    const uint8_t* const row = picture_.row(y).data();
    if (picture_.depth() != 24) {
      for (size_t channel = 0; channel < 3; ++channel) look_up(components_[channel], row, x, count, to[channel]);
      return;
    }
    const uint8_t* pixel = row + size_t{3} * static_cast<size_t>(x);
    const int available = std::clamp(picture_.width() - x, 0, count);
    for (int i = 0; i < available; ++i, pixel += 3) {
      to[0][i] = pixel[2];
      to[1][i] = pixel[1];
      to[2][i] = pixel[0];
    }
    for (int i = available; i < count; ++i) to[0][i] = to[1][i] = to[2][i] = 0;
  }

 private:
  using Table = std::array<uint8_t, 256>;

  void look_up(const Table& table, const uint8_t* row, int x, int count, uint8_t* to) const {
    if (picture_.depth() == 8)
      for (int i = 0; i < count; ++i) to[i] = table[row[x + i]];
    else
      for (int i = 0; i < count; ++i) to[i] = table[Pixel<4>::load(row, x + i)];
  }

  ConstDibView picture_;
  std::array<Table, 3> components_{};
  Table luminances_{};
  bool is_ramp_ = true;  // pixels are their luminances
};

}  // namespace vorel::kernels::VOREL_LEVEL
