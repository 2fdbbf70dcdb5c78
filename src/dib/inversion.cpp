#include "dib/inversion.h"

#include <utility>

namespace vorel {

void complement_colors(std::span<Rgb> colors) {
  for (Rgb& color : colors) {
    color.blue ^= 0xFF;
    color.green ^= 0xFF;
    color.red ^= 0xFF;
  }
}

void swap_colors(Rgb& a, Rgb& b) {
  std::swap(a.blue, b.blue);
  std::swap(a.green, b.green);
  std::swap(a.red, b.red);
}

void invert_bits(std::span<uint8_t> bytes) {
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(~byte);
}

}  // namespace vorel
