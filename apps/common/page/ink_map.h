// How much ink is where on a page, in cells of a few pixels: small enough to look at a whole page many times.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "common/picture.h"

namespace vorel::programs {

// The sides of a cell in pixels: powers of two, at most 32.
struct CellSize {
  int width = 1, height = 1;
};

// Rows of cells from the top, of 0 for paper to kMostInk. At the right and lower edges cells may reach past the page.
class InkMap {
 public:
  static constexpr uint8_t kMostInk = 16;

  InkMap(Size size, CellSize cell)
      : size_(size), cell_(cell), cells_(static_cast<size_t>(size.width) * static_cast<size_t>(size.height)) {}

  int width() const { return size_.width; }
  int height() const { return size_.height; }
  CellSize cell() const { return cell_; }

  std::span<uint8_t> row(int y) { return {cells_.data() + offset(y), static_cast<size_t>(size_.width)}; }
  std::span<const uint8_t> row(int y) const { return {cells_.data() + offset(y), static_cast<size_t>(size_.width)}; }

 private:
  size_t offset(int y) const { return static_cast<size_t>(y) * static_cast<size_t>(size_.width); }

  Size size_;
  CellSize cell_;
  std::vector<uint8_t> cells_;
};

// The darker of the two colours (0 or 1) of a 1-bit picture: its ink.
uint32_t darker_color(const Picture& picture);

// The least power of two as the side of a cell that gives the page at most 250,000 cells, at most 1,024 in a row or column. On letter
// paper that is 37 to 50 cells to the inch.
int cell_side(const Picture& picture);

// Ink of a workable picture. With two colours, the darker one is ink. Otherwise ink rises from the paper's luminance to the darkest
// one; a twentieth of the page is as bright as the paper or brighter.
InkMap ink_map(const Picture& picture, CellSize cell);

// The same in cells that are whole multiples of the map's own.
InkMap coarser(const InkMap& fine, CellSize cell);

// For each cell, row by row: whether it belongs to, or touches, solid ink that reaches the edge of the page. Such ink is the dark of
// a scanner beside the paper.
std::vector<uint8_t> dark_borders(const InkMap& map);

// Takes the ink of the listed cells away. `listed` is the map that the list was made from: this one or a coarser one.
void remove_cells(InkMap& map, const InkMap& listed, std::span<const uint8_t> list);

}  // namespace vorel::programs
