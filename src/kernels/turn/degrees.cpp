#include "kernels/turn/degrees.h"

#include <array>
#include <cstddef>

// C libraries differ in the last bit of sine and cosine, and pictures would differ with it. These are power series in
// double-double arithmetic, evaluated at compile time.
namespace vorel::kernels {
namespace {

// The unevaluated sum of two doubles; the low one is too small to change the high one.
struct DoubleDouble {
  double high = 0, low = 0;
};

constexpr DoubleDouble sum_of(double a, double b) {
  const double sum = a + b, b_in_sum = sum - a;
  return {sum, (a - (sum - b_in_sum)) + (b - b_in_sum)};
}

constexpr DoubleDouble split(double a) {
  const double shifted = a * 0x1p27 + a, high = shifted - (shifted - a);
  return {high, a - high};
}

constexpr DoubleDouble product_of(double a, double b) {
  const DoubleDouble x = split(a), y = split(b);
  const double product = a * b;
  return {product, ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low};
}

constexpr DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble sum = sum_of(a.high, b.high);
  return sum_of(sum.high, sum.low + (a.low + b.low));
}

constexpr DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble product = product_of(a.high, b.high);
  return sum_of(product.high, product.low + (a.high * b.low + a.low * b.high));
}

constexpr DoubleDouble operator/(DoubleDouble a, double divisor) {
  const double quotient = a.high / divisor;
  const DoubleDouble back = product_of(quotient, divisor);
  return sum_of(quotient, ((a.high - back.high) - back.low + a.low) / divisor);
}

// first - first x^2 / (n (n + 1)) + ...; each term continues with the next two divisors.
constexpr double alternating_series(DoubleDouble first, DoubleDouble x_squared, int n) {
  DoubleDouble sum, term = first;
  for (; term.high > 1e-40 || term.high < -1e-40; n += 2) {
    sum = sum + term;
    term = term * x_squared / (-1.0 * n * (n + 1));
  }
  return sum.high;
}

constexpr Direction direction_at(double radians) {
  const DoubleDouble x{radians, 0}, x_squared = x * x;
  return {alternating_series(x, x_squared, 2), alternating_series({1, 0}, x_squared, 1)};
}

constexpr auto kDirections = [] {
  std::array<Direction, 360> table{};
  for (int degrees = 0; degrees < 360; ++degrees)
    table[static_cast<size_t>(degrees)] = direction_at(degrees * kRadiansPerDegree);
  return table;
}();

}  // namespace

Direction direction_of(int degrees) {
  if (degrees >= 0) return kDirections[static_cast<size_t>(degrees)];
  const Direction mirrored = kDirections[static_cast<size_t>(-degrees)];
  return {-mirrored.sine, mirrored.cosine};
}

}  // namespace vorel::kernels
