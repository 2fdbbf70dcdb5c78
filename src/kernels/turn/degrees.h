// Sine and cosine of whole degrees, the same on every machine.
#pragma once

namespace vorel::kernels {

// The library's degree, cut to eight decimals. Results depend on it.
inline constexpr double kRadiansPerDegree = 0.01745329;

struct Direction {
  double sine, cosine;
};

// Of angle * kRadiansPerDegree, correctly rounded, for angles from -359 to 359.
Direction direction_of(int degrees);

}  // namespace vorel::kernels
