#include "kernels/turn/rotation.h"

#include <algorithm>

#include "kernels/turn/degrees.h"

namespace vorel::kernels {
namespace {

constexpr int kFullTurn = 360;

Point turned(Point p, Direction by) { return {p.x * by.cosine - p.y * by.sine, p.y * by.cosine + p.x * by.sine}; }

}  // namespace

int Rotation::normalized(int32_t angle) { return (angle < 0 ? angle + kFullTurn : angle) % kFullTurn; }

Rotation::Rotation(int32_t source_width, int32_t source_height, int angle) {
  const Point half{source_width / 2.0, source_height / 2.0};
  const Direction direction = direction_of(angle);
  corners = {turned({-half.x, -half.y}, direction), turned({half.x, -half.y}, direction),
             turned({half.x, half.y}, direction), turned({-half.x, half.y}, direction)};
  const auto by_x = [](Point a, Point b) { return a.x < b.x; };
  const auto by_y = [](Point a, Point b) { return a.y < b.y; };
  const auto x_most = rounded<int64_t>(std::ranges::max(corners, by_x).x);
  const auto y_most = rounded<int64_t>(std::ranges::max(corners, by_y).y);
  width = 2 * x_most;
  height = 2 * y_most;

  const auto source_of = [&](int64_t x, int64_t y) {
    const Direction back{-direction.sine, direction.cosine};
    return turned({static_cast<double>(x), static_cast<double>(y)}, back) + half;
  };
  first = source_of(-x_most, -y_most);
  across = source_of(x_most - 1, -y_most) - first;
  column_step = across / static_cast<double>(width - 1);
  row_step = (source_of(-x_most, y_most - 1) - first) / static_cast<double>(height - 1);
}

bool Rotation::is_countable() const {
  constexpr int64_t kMost = int64_t{1} << 29;
  return width <= kMost && height <= kMost;
}

}  // namespace vorel::kernels
