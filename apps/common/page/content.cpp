#include "common/page/content.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "common/page/ink_map.h"

namespace vorel::programs {
namespace {

// The ink of a page without borders and specks.
struct Content {
  InkMap map;
  std::vector<uint8_t> borders;  // cells, row by row

  explicit Content(const Picture& page)
      : map(ink_map(page, {cell_side(page), cell_side(page)})), borders(dark_borders(map)) {
    remove_cells(map, map, borders);
    remove_specks();
  }

  bool is_border(int x, int y) const {
    return borders[static_cast<size_t>(y) * static_cast<size_t>(map.width()) + static_cast<size_t>(x)] != 0;
  }

 private:
  // Ink stays where a cell and its eight neighbours have half a cell of it together.
  void remove_specks() {
    constexpr int kLeast = InkMap::kMostInk / 2;
    const InkMap whole = map;
    std::vector<int> columns(static_cast<size_t>(map.width()));
    for (int y = 0; y < map.height(); ++y) {
      std::ranges::fill(columns, 0);
      for (int j = std::max(0, y - 1); j <= std::min(map.height() - 1, y + 1); ++j)
        for (size_t x = 0; x < columns.size(); ++x) columns[x] += whole.row(j)[x];
      for (size_t x = 0; x < columns.size(); ++x) {
        const int around = columns[x] + (x > 0 ? columns[x - 1] : 0) + (x + 1 < columns.size() ? columns[x + 1] : 0);
        if (around < kLeast) map.row(y)[x] = 0;
      }
    }
  }
};

// The cells with ink; of no width if there are none.
struct Cells {
  int left, top, right, bottom;  // the last two are behind
};

Cells inked_cells(const InkMap& map) {
  Cells cells{map.width(), map.height(), 0, 0};
  for (int y = 0; y < map.height(); ++y)
    for (int x = 0; x < map.width(); ++x)
      if (map.row(y)[static_cast<size_t>(x)] != 0) {
        cells = {std::min(cells.left, x), std::min(cells.top, y), std::max(cells.right, x + 1), y + 1};
      }
  return cells;
}

// Grows by some cells on each side, but not onto borders beside the content.
Cells grown(const Content& content, const Cells& inner, int across, int down) {
  const auto column_is_free = [&](int x) {
    for (int y = inner.top; y < inner.bottom; ++y)
      if (content.is_border(x, y)) return false;
    return true;
  };
  const auto row_is_free = [&](int y) {
    for (int x = inner.left; x < inner.right; ++x)
      if (content.is_border(x, y)) return false;
    return true;
  };
  Cells outer = inner;
  for (int i = 0; i < across && outer.left > 0 && column_is_free(outer.left - 1); ++i) --outer.left;
  for (int i = 0; i < across && outer.right < content.map.width() && column_is_free(outer.right); ++i) ++outer.right;
  for (int i = 0; i < down && outer.top > 0 && row_is_free(outer.top - 1); ++i) --outer.top;
  for (int i = 0; i < down && outer.bottom < content.map.height() && row_is_free(outer.bottom); ++i) ++outer.bottom;
  return outer;
}

}  // namespace

double ink_percent(const Picture& page, double margin) {
  const Content content(page);
  const int across = static_cast<int>(content.map.width() * margin), down = static_cast<int>(content.map.height() * margin);
  uint64_t ink = 0, cells = 0;
  for (int y = down; y < content.map.height() - down; ++y)
    for (const uint8_t cell :
         content.map.row(y).subspan(static_cast<size_t>(across), static_cast<size_t>(content.map.width() - 2 * across))) {
      ink += cell;
      ++cells;
    }
  return cells == 0 ? 0 : 100.0 * static_cast<double>(ink) / (static_cast<double>(cells) * InkMap::kMostInk);
}

std::optional<Rect> content_box(const Picture& page, Size margin) {
  const Content content(page);
  const Cells inner = inked_cells(content.map);
  if (inner.right == 0) return {};
  const int side = content.map.cell().width;
  const auto cells = [&](int pixels) { return (pixels + side - 1) / side; };
  const Cells outer = grown(content, inner, cells(margin.width), cells(margin.height));
  const int left = outer.left * side, top = outer.top * side;
  return Rect{left, top, std::min(outer.right * side, page.width()) - left,
              std::min(outer.bottom * side, page.height()) - top};
}

}  // namespace vorel::programs
