#include "tiff/orientation.h"

#include <algorithm>
#include <utility>

namespace codec {
namespace {

// Where a stored pixel belongs on the page.
struct Placement {
  int width, height;  // as stored
  bool from_right, from_bottom, by_columns;

  Placement(const NewDib& stored, int orientation)
      : width(stored.width()),
        height(stored.height()),
        from_right(orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8),
        from_bottom(orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7),
        by_columns(orientation >= 5) {}

  std::pair<int, int> of(int column, int row) const {
    const int along = from_right ? width - 1 - column : column;
    const int across = from_bottom ? height - 1 - row : row;
    return by_columns ? std::pair(across, along) : std::pair(along, across);
  }
};

void turn_true_color(const NewDib& stored, const Placement& placement, const NewDib& page) {
  for (int row = 0; row < stored.height(); ++row) {
    const auto pixels = stored.row_from_top(row);
    for (int column = 0; column < stored.width(); ++column) {
      const auto [x, y] = placement.of(column, row);
      std::ranges::copy(pixels.subspan(static_cast<size_t>(column) * 3, 3),
                        page.row_from_top(y).begin() + x * std::ptrdiff_t{3});
    }
  }
}

void turn_indices(const NewDib& stored, int depth, const Placement& placement, const NewDib& page) {
  std::vector<uint8_t> indices(static_cast<size_t>(stored.width()));
  const int per_byte = 8 / depth;
  for (int row = 0; row < stored.height(); ++row) {
    unpack_indices(stored.row_from_top(row), depth, indices);
    for (int column = 0; column < stored.width(); ++column) {
      const auto [x, y] = placement.of(column, row);
      const int shift = (per_byte - 1 - x % per_byte) * depth;
      page.row_from_top(y)[static_cast<size_t>(x / per_byte)] |=
          static_cast<uint8_t>(indices[static_cast<size_t>(column)] << shift);
    }
  }
}

}  // namespace

HGLOBAL upright(NewDib& stored, const Layout& layout, int orientation) {
  if (orientation <= 1 || orientation > 8) return stored.release();
  const Placement placement(stored, orientation);
  Layout turned = layout;
  if (placement.by_columns) {
    std::swap(turned.width, turned.height);
    std::swap(turned.resolution.x, turned.resolution.y);
  }
  NewDib page(turned);
  if (layout.depth == 24) {
    turn_true_color(stored, placement, page);
  } else {
    turn_indices(stored, layout.depth, placement, page);
  }
  return page.release();
}

}  // namespace codec
