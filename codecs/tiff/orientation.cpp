#include "tiff/orientation.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace codec {
namespace {

struct TrueColor {
  uint8_t blue, green, red;
};

// Rows with a byte, or three, for each pixel.
void unpack(std::span<const uint8_t> row, int depth, std::span<uint8_t> line) { unpack_indices(row, depth, line); }
void unpack(std::span<const uint8_t> row, int /*depth*/, std::span<TrueColor> line) {
  std::memcpy(line.data(), row.data(), line.size_bytes());
}
void pack(std::span<const uint8_t> line, int depth, std::span<uint8_t> row) { pack_indices(line, depth, row); }
void pack(std::span<const TrueColor> line, int /*depth*/, std::span<uint8_t> row) {
  std::memcpy(row.data(), line.data(), line.size_bytes());
}

template <class Pixel>
class Turn {
 public:
  Turn(const NewDib& stored, int depth, int orientation)
      : stored_(stored),
        depth_(depth),
        from_right_(orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8),
        from_bottom_(orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7) {}

  void by_rows(const NewDib& page) const {
    Line line(static_cast<size_t>(stored_.width()));
    for (int y = 0; y < page.height(); ++y) {
      read(y, line);
      pack(line, depth_, page.row_from_top(y));
    }
  }

  // As many stored rows at a time as make a byte of the page's rows.
  void by_columns(const NewDib& page) const {
    const int most = depth_ < 8 ? 8 / depth_ : 1;
    std::vector<Line> lines(static_cast<size_t>(most), Line(static_cast<size_t>(stored_.width())));
    Line pixels;
    for (int x = 0; x < page.width(); x += most) {
      pixels.resize(static_cast<size_t>(std::min(most, page.width() - x)));
      for (size_t i = 0; i < pixels.size(); ++i) read(x + static_cast<int>(i), lines[i]);
      const size_t offset = static_cast<size_t>(x) * static_cast<size_t>(depth_) / 8;
      for (int y = 0; y < page.height(); ++y) {
        for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = lines[i][static_cast<size_t>(y)];
        pack(pixels, depth_, page.row_from_top(y).subspan(offset));
      }
    }
  }

 private:
  using Line = std::vector<Pixel>;

  // A stored row, counted and running as the page has it.
  void read(int index, Line& line) const {
    unpack(stored_.row_from_top(from_bottom_ ? stored_.height() - 1 - index : index), depth_, line);
    if (from_right_) std::ranges::reverse(line);
  }

  const NewDib& stored_;
  int depth_;
  bool from_right_, from_bottom_;
};

template <class Pixel>
HGLOBAL turned(const NewDib& stored, Layout layout, int orientation) {
  const Turn<Pixel> turn(stored, layout.depth, orientation);
  const bool rows_are_columns = orientation >= 5;
  if (rows_are_columns) {
    std::swap(layout.width, layout.height);
    std::swap(layout.resolution.x, layout.resolution.y);
  }
  NewDib page(layout);
  rows_are_columns ? turn.by_columns(page) : turn.by_rows(page);
  return page.release();
}

}  // namespace

HGLOBAL upright(NewDib& stored, const Layout& layout, int orientation) {
  if (orientation <= 1 || orientation > 8) return stored.release();
  return layout.depth == 24 ? turned<TrueColor>(stored, layout, orientation) : turned<uint8_t>(stored, layout, orientation);
}

}  // namespace codec
