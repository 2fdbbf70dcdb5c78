// Weighted sums of the components of 24-bit pixels.
#pragma once

#include <array>

#include "kernels/lanes.h"

namespace vorel::kernels::VOREL_LEVEL {

// (blue * b + green * g + red * r) / divisor, truncated. The division is a product, exact for each divisor in use.
struct ComponentWeights {
  int blue, green, red, divisor;

  constexpr int most() const { return (blue + green + red) * 255; }
  constexpr uint32_t factor() const {
    return ((1u << (16 + shift())) + static_cast<uint32_t>(divisor) - 1) / static_cast<uint32_t>(divisor);
  }
  constexpr int shift() const { return divisor > 4 ? 2 : 0; }
  constexpr uint32_t quotient(uint32_t sum) const { return (sum * factor() >> 16) >> shift(); }
  constexpr bool is_exact() const {
    for (uint32_t sum = 0; sum <= static_cast<uint32_t>(most()); ++sum)
      if (quotient(sum) != sum / static_cast<uint32_t>(divisor)) return false;
    return factor() <= 0xFFFF;
  }
};

inline constexpr ComponentWeights kMeanWeights = {1, 1, 1, 3};
inline constexpr ComponentWeights kGrayWeights = {3, 15, 8, 26};
inline constexpr ComponentWeights kIntensityWeights = {8, 15, 3, 26};
static_assert(kMeanWeights.is_exact() && kGrayWeights.is_exact() && kIntensityWeights.is_exact());

// The weighted sums of four pixels in each part of a vector, the parts sixteen pixels apart. Also reads the four bytes behind
// the pixels.
template <ComponentWeights kWeights>
[[gnu::always_inline]] inline Doublewords weighted_sums(const uint8_t* pixels) {
#ifdef __SSE4_1__
  // Each pixel is followed by a zero.
  constexpr auto kSpread = [] {
    std::array<uint8_t, kVectorBytes> places{};
    for (size_t i = 0; i < kVectorBytes; ++i) places[i] = static_cast<uint8_t>(i % 4 == 3 ? 0x80 : i % 16 / 4 * 3 + i % 4);
    return places;
  }();
  const auto weights = (Bytes)(Doublewords{} + (kWeights.blue | kWeights.green << 8 | kWeights.red << 16));
  return multiply_add(multiply_add(shuffle(parts(pixels, 48), load<Bytes>(kSpread.data())), weights), Words{} + uint16_t{1});
#else
  Doublewords four;
  for (int i = 0; i < 4; ++i) {
    int32_t pixel;
    std::memcpy(&pixel, pixels + i * 3, sizeof pixel);
    four[i] = pixel;
  }
  return multiply_add((Words)four & 0xFF, (Words)(Doublewords{} + (kWeights.blue | kWeights.red << 16))) +
         multiply_add((Words)four >> 8, (Words)(Doublewords{} + kWeights.green));
#endif
}

// The weighted means of kVectorBytes pixels, from this many bytes.
inline constexpr size_t kWeightedBytesRead = 3 * kVectorBytes + 4;
template <ComponentWeights kWeights>
[[gnu::always_inline]] inline Bytes weighted_pixels(const uint8_t* pixels) {
  const auto eight = [&](size_t first) VOREL_INLINE {
    const uint8_t* const from = pixels + first * 3;
    const Words sums = pack(weighted_sums<kWeights>(from), weighted_sums<kWeights>(from + 12));
    return multiply_high(sums, Words{} + static_cast<uint16_t>(kWeights.factor())) >> kWeights.shift();
  };
  return pack(eight(0), eight(8));
}

// The weighted sum of each pixel of a row. put(to, vector) stores a vector.
template <ComponentWeights kWeights, class Put>
[[gnu::always_inline]] inline void weigh_row(const uint8_t* pixels, uint8_t* result, size_t count, Put put) {
  size_t x = 0;
  for (; x * 3 + kWeightedBytesRead <= count * 3; x += kVectorBytes)
    put(result + x, weighted_pixels<kWeights>(pixels + x * 3));
  for (; x < count; ++x) {
    const uint8_t* const pixel = pixels + x * 3;
    result[x] = static_cast<uint8_t>(kWeights.quotient(
        static_cast<uint32_t>(kWeights.blue * pixel[0] + kWeights.green * pixel[1] + kWeights.red * pixel[2])));
  }
}

template <ComponentWeights kWeights>
[[gnu::always_inline]] inline void weigh_row(const uint8_t* pixels, uint8_t* result, size_t count) {
  weigh_row<kWeights>(pixels, result, count, [](uint8_t* to, Bytes vector) VOREL_INLINE { store(to, vector); });
}

}  // namespace vorel::kernels::VOREL_LEVEL
