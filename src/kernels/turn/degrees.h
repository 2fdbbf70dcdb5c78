// Sine and cosine of whole degrees, the same on every machine.
#pragma once

namespace vorel::kernels {

// Radians per degree, cut to eight decimals. Results depend on it.
inline constexpr double kRadiansPerDegree = 0.01745329;

struct Direction {
  double sine, cosine;
};

// Of degrees * kRadiansPerDegree, correctly rounded, for -359 to 359 degrees.
Direction direction_of(int degrees);

}  // namespace vorel::kernels
