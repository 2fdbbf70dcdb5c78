#include "tiff/lab.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace codec {
namespace {

// From CIE 1976: the share of the illuminant that an intermediate value stands for.
double share(double value) {
  constexpr double kLinearUpTo = 6.0 / 29;
  return value > kLinearUpTo ? value * value * value : 3 * kLinearUpTo * kLinearUpTo * (value - 4.0 / 29);
}

// From IEC 61966-2-1.
uint8_t gamma_encoded(double light) {
  light = std::clamp(light, 0.0, 1.0);
  const double value = light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
  return static_cast<uint8_t>(std::lround(value * 255));
}

}  // namespace

void lab_to_true_color(std::span<uint8_t> pixels) {
  // XYZ of the screen's illuminant, and the way from there to its three lights: blue, green, red.
  constexpr std::array<double, 3> kWhite = {0.950456, 1, 1.088754};
  constexpr double kLights[3][3] = {
      {0.0556434, -0.2040259, 1.0572252}, {-0.9692660, 1.8760108, 0.0415560}, {3.2404542, -1.5371385, -0.4985314}};
  for (size_t i = 0; i + 3 <= pixels.size(); i += 3) {
    const double y = (pixels[i + 2] * 100 / 255.0 + 16) / 116;
    const double x = y + (pixels[i + 1] - 128) / 500.0, z = y - (pixels[i] - 128) / 200.0;
    const double xyz[3] = {kWhite[0] * share(x), kWhite[1] * share(y), kWhite[2] * share(z)};
    for (size_t k = 0; k < 3; ++k)
      pixels[i + k] = gamma_encoded(kLights[k][0] * xyz[0] + kLights[k][1] * xyz[1] + kLights[k][2] * xyz[2]);
  }
}

}  // namespace codec
