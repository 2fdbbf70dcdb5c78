// Pixels seen without owning them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace vorel {

// Bytes that the pixels of one row take, padding not included.
constexpr size_t row_bytes(int depth, int width) {
  return static_cast<size_t>((static_cast<uint64_t>(depth) * static_cast<uint64_t>(width) + 7) / 8);
}

// In pixels.
struct Size {
  int width = 0, height = 0;
};

// A part of a picture, counted from its top left corner.
struct Rect {
  int x = 0, y = 0, width = 0, height = 0;
};

// Rows of pixels in memory. Rows are counted as they are stored: in a packed DIB row 0 is the bottom line of the picture, in
// the bits of a device bitmap the top line. Whoever makes a view ensures that its rows are inside the memory.
template <class Byte>
class BasicView {
 public:
  BasicView(Byte* first_row, std::ptrdiff_t stride, int width, int height, int depth)
      : first_row_(first_row), stride_(stride), width_(width), height_(height), depth_(depth) {}

  int width() const { return width_; }
  int height() const { return height_; }
  int depth() const { return depth_; }               // bits from one pixel to the next
  std::ptrdiff_t stride() const { return stride_; }  // bytes from one row to the next

  // The bytes that hold the pixels of row y.
  std::span<Byte> row(int y) const { return {first_row_ + y * stride_, row_bytes(depth_, width_)}; }
  // Row y of a packed DIB counted from the top of the picture.
  std::span<Byte> row_from_top(int y) const { return row(height_ - 1 - y); }

  Size size() const { return {width_, height_}; }

  // The same memory, fewer rows or another width.
  BasicView first_rows(int height) const { return {first_row_, stride_, width_, height, depth_}; }
  BasicView without_first_row() const { return {first_row_ + stride_, stride_, width_, height_ - 1, depth_}; }
  BasicView with_width(int width) const { return {first_row_, stride_, width, height_, depth_}; }
  // The first `count` bytes of each row, whatever pixels they hold.
  BasicView byte_rows(int count) const { return {first_row_, stride_, count, height_, 8}; }

  operator BasicView<const Byte>() const  // NOLINT(google-explicit-constructor): reading is always allowed
      requires(!std::is_const_v<Byte>) {
    return {first_row_, stride_, width_, height_, depth_};
  }

 private:
  Byte* first_row_;
  std::ptrdiff_t stride_;
  int width_, height_, depth_;
};

using DibView = BasicView<uint8_t>;
using ConstDibView = BasicView<const uint8_t>;

}  // namespace vorel
