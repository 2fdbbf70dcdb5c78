// Turning by any whole number of degrees, by picking the nearest source pixel for each pixel of the result.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>

namespace vorel::kernels {

// A position or a step in a picture; row 0 is the first stored row.
struct Point {
  double x = 0, y = 0;
  friend Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
  friend Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
  friend Point operator/(Point a, double divisor) { return {a.x / divisor, a.y / divisor}; }
};

// To the nearest whole number, halves away from zero.
template <class Integer>
Integer rounded(double value) {
  return static_cast<Integer>(value + std::copysign(0.5, value));
}

// How columns of the result are traced through the source.
enum class Stepping {
  kInteger,  // by integer additions along a row
  kExact,    // by adding the exact step and rounding at each pixel
};

// The geometry of a turn: the result's place and the source of its pixels.
struct Rotation {
  // A caller's angle reduced to less than a full turn: from -359 to 359.
  static int normalized(int32_t angle);

  // A counter-clockwise turn of a picture of this size by a normalized angle.
  Rotation(int32_t width, int32_t height, int angle);

  // Whether coordinates fit 32 bits, with room for the sums of stepping.
  bool is_countable() const;

  int64_t width, height;         // of the result: even, and centred on the source's centre
  std::array<Point, 4> corners;  // of the source, turned, relative to the centre, in the order of a walk around it
  Point first, across;  // the source position of the result's first stored pixel; from there to the last one of its row
  Point column_step, row_step;  // from one pixel of the result to its neighbours
};

}  // namespace vorel::kernels
