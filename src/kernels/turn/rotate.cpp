#include <cmath>
#include <type_traits>

#include "core/row_writer.h"
#include "kernels/turn/functions.h"

namespace vorel::kernels::VOREL_LEVEL {
namespace {

// The pixel that a row of the result is at, followed by exact positions.
class ExactSteps {
 public:
  explicit ExactSteps(const Rotation& rotation) : step_(rotation.column_step) {}

  void start(Point position) {
    position_ = position;
    round();
  }
  void advance() {
    position_ = position_ + step_;
    round();
  }
  int x() const { return x_; }
  int y() const { return y_; }

 private:
  void round() {
    x_ = rounded<int>(position_.x);
    y_ = rounded<int>(position_.y);
  }

  Point step_, position_;
  int x_ = 0, y_ = 0;
};

// The same by counting: each coordinate moves on when its share of a row's columns has gone by.
class IntegerSteps {
 public:
  explicit IntegerSteps(const Rotation& rotation)
      : x_share_{2 * rounded<int>(std::abs(rotation.across.x)), rotation.column_step.x >= 0 ? 1 : -1},
        y_share_{2 * rounded<int>(std::abs(rotation.across.y)), rotation.column_step.y >= 0 ? 1 : -1},
        columns_(static_cast<int>(rotation.width - 1)) {}

  void start(Point position) {
    x_share_.start(rounded<int>(position.x));
    y_share_.start(rounded<int>(position.y));
  }
  void advance() {
    x_share_.advance(columns_);
    y_share_.advance(columns_);
  }
  int x() const { return x_share_.at; }
  int y() const { return y_share_.at; }

 private:
  struct Share {
    int share, direction, error = 0, at = 0;

    void start(int position) {
      at = position;
      error = 0;
    }
    void advance(int columns) {
      error += share;
      if (error <= columns) return;
      error -= 2 * columns;
      at += direction;
    }
  };

  Share x_share_, y_share_;
  int columns_;
};

// Whether a coordinate has not come in yet, and whether it has gone out on the other side, for its way of moving.
template <bool kForward>
bool is_before(int at, int size) {
  return kForward ? at < 0 : at >= size;
}
template <bool kForward>
bool is_past(int at, int size) {
  return kForward ? at >= size : at < 0;
}

// The picture is convex: each row of the result runs into it once and leaves it once.
template <int kDepth, bool kRight, bool kUp, class Steps>
void walk_row(ConstDibView source, uint8_t* row, int columns, Steps& steps) {
  const int width = source.width(), height = source.height();
  int column = 0;
  while (column < columns && (is_before<kRight>(steps.x(), width) || is_before<kUp>(steps.y(), height))) {
    steps.advance();
    ++column;
  }
  if (column == columns) return;
  RowWriter<kDepth> writer(row, column);
  const uint8_t* const first_row = source.row(0).data();
  const std::ptrdiff_t stride = source.stride();
  while (column < columns && !is_past<kRight>(steps.x(), width) && !is_past<kUp>(steps.y(), height)) {
    writer.put(Pixel<kDepth>::load(first_row + steps.y() * stride, steps.x()));
    steps.advance();
    ++column;
  }
}

template <int kDepth, bool kRight, bool kUp, class Steps>
void walk(ConstDibView source, DibView result, const Rotation& rotation) {
  Steps steps(rotation);
  Point position = rotation.first;
  for (int y = 0; y < result.height(); ++y, position = position + rotation.row_step) {
    steps.start(position);
    walk_row<kDepth, kRight, kUp>(source, result.row(y).data(), result.width(), steps);
  }
}

// Calls op with a condition as a constant.
template <class Op>
void with_condition(bool condition, Op&& op) {
  condition ? op(std::true_type{}) : op(std::false_type{});
}

}  // namespace

void rotate(ConstDibView source, DibView result, const Rotation& rotation, Stepping stepping) {
  if (source.width() <= 0 || source.height() <= 0) return;
  with_depth(source.depth(), [&](auto depth) {
    with_condition(rotation.column_step.x >= 0, [&](auto right) {
      with_condition(rotation.column_step.y >= 0, [&](auto up) {
        if (stepping == Stepping::kInteger)
          walk<depth, right, up, IntegerSteps>(source, result, rotation);
        else
          walk<depth, right, up, ExactSteps>(source, result, rotation);
      });
    });
  });
}

}  // namespace vorel::kernels::VOREL_LEVEL
