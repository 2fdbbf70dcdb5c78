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

// Of the two colours of a picture of 1 bit the number of the darker one, which is its ink.
uint32_t darker_color(const Picture& picture);

// The side of square cells of which a page has at most a quarter of a million: 37 to 50 to the inch on a sheet of letter paper.
int cell_side(const Picture& picture);

// Ink of a workable picture. Of two colours the darker one is ink. Greys and colours count by how far their luminance is from that
// of the paper, which is the brightest that a twentieth of the page reaches, towards the darkest one.
InkMap ink_map(const Picture& picture, CellSize cell);

// The same in cells that are whole multiples of the map's own.
InkMap coarser(const InkMap& fine, CellSize cell);

// Whether cells are, or are next to, solid ink that reaches the edge of the page: the dark of a scanner beside the paper. Rows of
// cells like those of the map.
std::vector<uint8_t> dark_borders(const InkMap& map);

// Takes away the ink of cells by such a list, which may be that of a coarser map of the same page.
void remove_cells(InkMap& map, const InkMap& listed, std::span<const uint8_t> list);

}  // namespace vorel::programs
