// The entry of a colour table that is nearest to a colour.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "core/header.h"

namespace vorel {

// Nearest is the smallest sum of the squared distances in red, green and blue; ties go to the first entry.
class NearestColor {
 public:
  // At most 256 entries are searched. An empty table counts as entry 0 alone.
  explicit NearestColor(std::span<const Rgb> colors);

  uint8_t index_of(uint8_t blue, uint8_t green, uint8_t red) {
    const uint32_t color = blue | uint32_t{green} << 8 | uint32_t{red} << 16;
    Answer& answer = answers_[(color * kHashFactor) >> (32 - kHashBits)];
    if (answer.color != color) answer = {color, search(blue, green, red)};
    return answer.index;
  }

 private:
  static constexpr int kHashBits = 12;
  static constexpr uint32_t kHashFactor = 0x9E3779B1;
  static constexpr uint32_t kNoColor = ~uint32_t{0};

  struct Answer {
    uint32_t color = kNoColor;
    uint8_t index = 0;
  };

  uint8_t search(int blue, int green, int red) const;

  std::array<int16_t, 256> blue_{}, green_{}, red_{};
  int count_;
  std::array<Answer, 1 << kHashBits> answers_{};  // a cache: pictures repeat their colours
};

}  // namespace vorel
