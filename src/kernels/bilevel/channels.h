// Rows of a picture taken apart into red, green and blue.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "core/header.h"
#include "core/view.h"
#include "kernels/bilevel/plane_width.h"

namespace vorel::kernels::VOREL_LEVEL {

class Channels {
 public:
  // `colors` has 16 or 256 entries below 24 bits. Memory that runs short is thrown as std::bad_alloc.
  Channels(ConstDibView picture, std::span<const Rgb> colors);

  // Rows are whole in memory, padding included. At 24 bits what is behind the last pixel is 0.
  void read(int y);
  // The same, as luminance in the first plane.
  void read_luminance(int y);

  size_t width() const { return planes_[0].size(); }
  std::span<const uint8_t> plane(int channel) const { return planes_[static_cast<size_t>(channel)]; }

 private:
  ConstDibView picture_;
  std::span<const Rgb> colors_;
  std::array<uint8_t, 256> luminances_{};       // of the colours
  std::array<std::vector<uint8_t>, 3> planes_;  // red, green, blue
};

}  // namespace vorel::kernels::VOREL_LEVEL
