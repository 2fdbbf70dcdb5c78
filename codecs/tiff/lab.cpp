#include "tiff/lab.h"

#include <algorithm>
#include <array>

namespace codec {
namespace {

// By CIE 1976: the share of the illuminant for an intermediate value.
double share(double value) {
  constexpr double kLinearUpTo = 6.0 / 29;
  return value > kLinearUpTo ? value * value * value : 3 * kLinearUpTo * kLinearUpTo * (value - 4.0 / 29);
}

constexpr double fifth_root(double value) {
  double root = 1;
  for (int i = 0; i < 20; ++i) root -= (root - value / (root * root * root * root)) / 5;  // Newton's steps
  return root;
}

// The linear light of a value from 0 to 1, by IEC 61966-2-1.
constexpr double gamma_decoded(double value) {
  if (value <= 0.04045) return value / 12.92;
  const double base = (value + 0.055) / 1.055, root = fifth_root(base);
  return base * base * root * root;  // to the power of 2.4
}

// The least light of each level but the first. Basic arithmetic makes this table, and conversion only compares: the C
// library's powers may differ in their last bits.
constexpr auto kFirstLights = [] {
  std::array<double, 255> lights{};
  for (size_t i = 0; i < lights.size(); ++i) lights[i] = gamma_decoded((static_cast<double>(i) + 0.5) / 255);
  return lights;
}();

uint8_t gamma_encoded(double light) {
  return static_cast<uint8_t>(std::ranges::upper_bound(kFirstLights, light) - kFirstLights.begin());
}

}  // namespace

void lab_to_true_color(std::span<uint8_t> pixels) {
  // XYZ of the screen's illuminant, and the matrix from XYZ to its three primaries: blue, green, red.
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
