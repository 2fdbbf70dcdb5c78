// One pixel of a row, and the one place where a picture's depth becomes a constant. Bit order is defined only here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace vorel {

// Pixel x of a row as a number. Below 8 bits the leftmost pixel sits in the highest bits of its byte; 24-bit pixels read as
// blue + 256 * green + 65536 * red.
template <int kDepth>
struct Pixel {
  static_assert(kDepth == 1 || kDepth == 4 || kDepth == 8 || kDepth == 24);

  static uint32_t load(const uint8_t* row, int x) {
    if constexpr (kDepth < 8) {
      return row[byte(x)] >> shift(x) & kMask;
    } else if constexpr (kDepth == 8) {
      return row[x];
    } else {
      const uint8_t* pixel = row + byte(x);
      return static_cast<uint32_t>(pixel[0] | pixel[1] << 8 | pixel[2] << 16);
    }
  }

  static void store(uint8_t* row, int x, uint32_t value) {
    if constexpr (kDepth < 8) {
      uint8_t& target = row[byte(x)];
      target = static_cast<uint8_t>((target & ~(kMask << shift(x))) | (value & kMask) << shift(x));
    } else if constexpr (kDepth == 8) {
      row[x] = static_cast<uint8_t>(value);
    } else {
      uint8_t* pixel = row + byte(x);
      pixel[0] = static_cast<uint8_t>(value);
      pixel[1] = static_cast<uint8_t>(value >> 8);
      pixel[2] = static_cast<uint8_t>(value >> 16);
    }
  }

 private:
  static constexpr uint32_t kMask = kDepth < 8 ? (1u << kDepth) - 1 : 0;
  // The bits of a row may exceed 32 bits; its bytes do not.
  static constexpr size_t byte(int x) {
    if constexpr (kDepth < 8) return static_cast<size_t>(x / (8 / kDepth));
    return static_cast<size_t>(x) * (kDepth / 8);
  }
  static constexpr int shift(int x) { return 8 - kDepth - x % (8 / kDepth) * kDepth; }
};

// The depths whose pixels are processed as colours: mixed, or reduced to fewer.
inline bool is_color_depth(int depth) { return depth == 4 || depth == 8 || depth == 24; }

// The depths that with_depth supports.
inline bool is_pixel_depth(int depth) { return depth == 1 || is_color_depth(depth); }

// Calls op with the depth as a constant and returns true; false without a call for an unsupported depth.
template <class Op>
bool with_depth(int depth, Op&& op) {
  switch (depth) {
    case 1: op(std::integral_constant<int, 1>{}); return true;
    case 4: op(std::integral_constant<int, 4>{}); return true;
    case 8: op(std::integral_constant<int, 8>{}); return true;
    case 24: op(std::integral_constant<int, 24>{}); return true;
    default: return false;
  }
}

}  // namespace vorel
