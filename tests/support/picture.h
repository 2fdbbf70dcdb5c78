// A packed DIB taken apart, for versions of operations that go one pixel at a time.
#pragma once

#include <algorithm>
#include <cstring>
#include <utility>

#include "support/dib.h"

namespace test {

struct Picture {
  Bytes bytes;
  BITMAPINFOHEADER header = header_of(bytes);
  int width = header.biWidth, height = header.biHeight, depth = header.biBitCount;
  size_t colors = header.biClrUsed != 0 ? header.biClrUsed : depth <= 8 ? size_t{1} << depth : 0;
  size_t head = sizeof header + 4 * colors, stride = stride_of(width, depth);

  explicit Picture(Bytes dib) : bytes(std::move(dib)) {}

  // A header, as much of a block as it may need behind it, and nothing in that.
  static Picture empty(const BITMAPINFOHEADER& header, size_t size) {
    return Picture(with_header(header, Bytes(size - sizeof header)));
  }

  // An empty one with another's colours.
  static Picture like(const Picture& other, const BITMAPINFOHEADER& header, size_t spare = 0) {
    const size_t rows = stride_of(header.biWidth, other.depth) * static_cast<size_t>(header.biHeight);
    const auto colors = other.bytes.begin() + sizeof header;
    Bytes rest(colors, colors + static_cast<std::ptrdiff_t>(other.head - sizeof header));
    rest.resize(rest.size() + rows + spare);
    return Picture(with_header(header, rest));
  }

  // Rows as the header states them, or else as they are.
  size_t image_size() const { return header.biSizeImage != 0 ? header.biSizeImage : stride * static_cast<size_t>(height); }

  size_t index(int x, int y) const { return head + static_cast<size_t>(y) * stride + static_cast<size_t>(x * depth / 8); }

  // A byte of the block: 0 past its end, where nothing is written either.
  int at(size_t i) const { return i < bytes.size() ? bytes[i] : 0; }
  void put(size_t i, int value) {
    if (i < bytes.size()) bytes[i] = static_cast<uint8_t>(value);
  }
  void copy(size_t to, const Picture& from, size_t begin, size_t count) {
    for (size_t i = 0; i < count; ++i) put(to + i, from.at(begin + i));
  }

  uint32_t pixel(int x, int y) const {
    const size_t i = index(x, y);
    if (depth == 24) return static_cast<uint32_t>(at(i) | at(i + 1) << 8 | at(i + 2) << 16);
    return static_cast<uint32_t>(at(i) >> (8 - depth - x * depth % 8) & ((1 << depth) - 1));
  }
  // Sets a pixel that is still zero.
  void set(int x, int y, uint32_t value) {
    const size_t i = index(x, y);
    for (size_t k = 0; depth == 24 && k < 3; ++k) put(i + k, static_cast<int>(value >> 8 * k & 0xFF));
    if (depth < 24) put(i, at(i) | static_cast<int>(value << (8 - depth - x * depth % 8)));
  }

  // Component 0, 1 or 2 (blue, green, red) of a table entry, whether or not the table goes that far.
  int color(int entry, int component) const { return at(sizeof header + static_cast<size_t>(4 * entry + component)); }
  void set_color(int entry, int blue, int green, int red) {
    for (int i = 0; const int value : {blue, green, red, 0})
      put(sizeof header + static_cast<size_t>(4 * entry + i++), value);
  }
};

}  // namespace test
