#include "common/page/ink_map.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <numeric>

#include "common/forms.h"
#include "core/gray.h"
#include "core/pixel.h"
#include "core/row_bits.h"

namespace vorel::programs {
namespace {

constexpr int kMostSide = 32;

Size map_size(const Picture& picture, CellSize cell) {
  return {(picture.width() - 1) / cell.width + 1, (picture.height() - 1) / cell.height + 1};
}

// ---- Two colours ----

// Counts the ink of rows in cells.
class BitCounter {
 public:
  BitCounter(const Picture& picture, int cell_width)
      : width_(cell_width),
        paper_(darker_color(picture) == 0 ? ~uint64_t{0} : 0),
        last_pixels_(__builtin_bswap64(~uint64_t{0} << (63 - (picture.width() - 1) % 64))),
        in_bytes_(static_cast<size_t>(picture.width() - 1) / 64 + 1),
        cells_(in_bytes_.size() * 64 / static_cast<size_t>(cell_width) + 1) {}

  void add(std::span<const uint8_t> row) {
    const size_t last = in_bytes_.size() - 1;
    const uint64_t last_word = (word_at(row, last * kWordBytes) ^ paper_) & last_pixels_;
    if (width_ >= 8) {
      add_bytes(row.data(), last_word);
    } else {
      for (size_t i = 0; i < last; ++i) add_groups(load_word(row.data() + i * kWordBytes) ^ paper_, i);
      add_groups(last_word, last);
    }
  }

  // The counts of the rows since the last call.
  void take(std::vector<uint16_t>& cells) {
    spread_bytes();
    cells = cells_;
    std::ranges::fill(cells_, uint16_t{0});
  }

 private:
  static constexpr int kMostRows = 31;  // eight pixels in each fit a byte

  void add_bytes(const uint8_t* row, uint64_t last_word) {
    const size_t last = in_bytes_.size() - 1;
    uint64_t* const sums = in_bytes_.data();
    for (size_t i = 0; i < last; ++i) sums[i] += counts_in_groups(load_word(row + i * kWordBytes) ^ paper_, 8);
    sums[last] += counts_in_groups(last_word, 8);
    if (++rows_ == kMostRows) spread_bytes();
  }

  void spread_bytes() {
    if (rows_ == 0) return;
    const auto bytes_of_cell = static_cast<size_t>(width_ / 8);
    for (size_t i = 0; i < in_bytes_.size(); ++i)
      for (size_t byte = i * kWordBytes; in_bytes_[i] != 0; ++byte, in_bytes_[i] >>= 8)
        cells_[byte / bytes_of_cell] += static_cast<uint16_t>(in_bytes_[i] & 0xFF);
    rows_ = 0;
  }

  // Cells narrower than a byte. Words of paper, which most of a page is, are passed over.
  void add_groups(uint64_t word, size_t index) {
    const auto in_byte = static_cast<size_t>(8 / width_);
    uint64_t counts = counts_in_groups(word, width_);
    for (size_t byte = index * kWordBytes; counts != 0; ++byte, counts >>= 8)
      for (uint32_t cell = static_cast<uint32_t>((byte + 1) * in_byte), groups = counts & 0xFF; groups != 0;
           groups >>= width_)
        cells_[--cell] += static_cast<uint16_t>(groups & ((1u << width_) - 1));
  }

  int width_;
  uint64_t paper_, last_pixels_;
  std::vector<uint64_t> in_bytes_;
  int rows_ = 0;  // in these sums
  std::vector<uint16_t> cells_;
};

InkMap count_bits(const Picture& picture, CellSize cell) {
  InkMap map(map_size(picture, cell), cell);
  BitCounter counter(picture, cell.width);
  const int shift = std::countr_zero(static_cast<uint32_t>(cell.width * cell.height));
  std::vector<uint16_t> cells;
  for (int y = 0; y < map.height(); ++y) {
    for (int line = y * cell.height; line < std::min((y + 1) * cell.height, picture.height()); ++line)
      counter.add(picture.pixels().row_from_top(line));
    counter.take(cells);
    std::transform(cells.begin(), cells.begin() + map.width(), map.row(y).begin(),
                   [&](uint16_t count) { return static_cast<uint8_t>(count * InkMap::kMostInk >> shift); });
  }
  return map;
}

// ---- Greys and colours ----

// Adds the luminance of each pixel of a row to its cell.
void add_levels(const Picture& picture, std::span<const uint8_t> levels, int y, int cell_width, std::span<uint32_t> cells) {
  const uint8_t* const row = picture.pixels().row_from_top(y).data();
  const auto add = [&](auto level_at) {
    for (int x = 0, cell = 0; x < picture.width(); ++cell)
      for (const int end = std::min(x + cell_width, picture.width()); x < end; ++x)
        cells[static_cast<size_t>(cell)] += level_at(x);
  };
  switch (picture.depth()) {
    case 4: add([&](int x) { return levels[Pixel<4>::load(row, x)]; }); break;
    case 8: add([&](int x) { return levels[row[x]]; }); break;
    default:
      add([&](int x) {
        const uint8_t* const pixel = row + ptrdiff_t{3} * x;
        return vorel::luminance_of({pixel[0], pixel[1], pixel[2], 0});
      });
  }
}

// Mean luminances of the cells.
InkMap mean_levels(const Picture& picture, CellSize cell) {
  InkMap map(map_size(picture, cell), cell);
  std::array<uint8_t, 256> levels{};
  if (picture.depth() <= 8)
    for (size_t i = 0; i < std::min(levels.size(), picture.colors().size()); ++i)
      levels[i] = vorel::luminance_of(picture.colors()[i]);
  std::vector<uint32_t> cells(static_cast<size_t>(map.width()));
  for (int y = 0; y < map.height(); ++y) {
    std::ranges::fill(cells, 0u);
    const int first = y * cell.height, last = std::min(first + cell.height, picture.height());
    for (int line = first; line < last; ++line) add_levels(picture, levels, line, cell.width, cells);
    for (int x = 0; x < map.width(); ++x) {
      const int columns = std::min(cell.width, picture.width() - x * cell.width);
      map.row(y)[static_cast<size_t>(x)] =
          static_cast<uint8_t>(cells[static_cast<size_t>(x)] / static_cast<uint32_t>(columns * (last - first)));
    }
  }
  return map;
}

struct Tones {
  int ink, paper;
};

Tones tones_of(const InkMap& levels) {
  std::array<uint64_t, 256> counts{};
  for (int y = 0; y < levels.height(); ++y)
    for (const uint8_t level : levels.row(y)) ++counts[level];
  const uint64_t part = static_cast<uint64_t>(levels.width()) * static_cast<uint64_t>(levels.height()) / 20;
  Tones tones{0, 255};
  while (counts[static_cast<size_t>(tones.ink)] == 0) ++tones.ink;
  for (uint64_t sum = counts[255]; sum <= part && tones.paper > tones.ink; sum += counts[static_cast<size_t>(tones.paper)])
    --tones.paper;
  return tones;
}

InkMap dark_levels(const Picture& picture, CellSize cell) {
  InkMap map = mean_levels(picture, cell);
  const Tones tones = tones_of(map);
  // What is hardly darker than the paper is its own texture.
  constexpr int kLeastContrast = 24;
  const int contrast = tones.paper - tones.ink, texture = std::max(contrast / 8, kLeastContrast / 2);
  std::array<uint8_t, 256> ink{};
  if (contrast >= kLeastContrast)
    for (int level = 0; level < tones.paper - texture; ++level)
      ink[static_cast<size_t>(level)] =
          static_cast<uint8_t>(std::min((tones.paper - level) * InkMap::kMostInk / contrast, int{InkMap::kMostInk}));
  for (int y = 0; y < map.height(); ++y)
    for (uint8_t& value : map.row(y)) value = ink[value];
  return map;
}

}  // namespace

uint32_t darker_color(const Picture& picture) {
  const auto brightness = [&](size_t i) { return i < picture.colors().size() ? brightness_of(picture.colors()[i]) : 0; };
  return brightness(1) < brightness(0) ? 1 : 0;
}

int cell_side(const Picture& picture) {
  constexpr int64_t kMostCells = 250'000;
  constexpr int kMostCellsAcross = 1024;
  int side = 1;
  while (side < kMostSide && (int64_t{picture.width()} * picture.height() > kMostCells * side * side ||
                              std::max(picture.width(), picture.height()) > kMostCellsAcross * side))
    side *= 2;
  return side;
}

InkMap ink_map(const Picture& picture, CellSize cell) {
  return picture.depth() == 1 ? count_bits(picture, cell) : dark_levels(picture, cell);
}

InkMap coarser(const InkMap& fine, CellSize cell) {
  const int across = cell.width / fine.cell().width, down = cell.height / fine.cell().height;
  InkMap map({(fine.width() - 1) / across + 1, (fine.height() - 1) / down + 1}, cell);
  std::vector<uint16_t> sums(static_cast<size_t>(map.width() * across));
  for (int y = 0; y < map.height(); ++y) {
    std::ranges::fill(sums, uint16_t{0});
    for (int row = y * down; row < std::min((y + 1) * down, fine.height()); ++row)
      for (size_t x = 0; x < fine.row(row).size(); ++x) sums[x] = static_cast<uint16_t>(sums[x] + fine.row(row)[x]);
    for (int x = 0; x < map.width(); ++x) {
      const auto first = sums.begin() + ptrdiff_t{x} * across;
      map.row(y)[static_cast<size_t>(x)] = static_cast<uint8_t>(std::accumulate(first, first + across, 0) / (across * down));
    }
  }
  return map;
}

std::vector<uint8_t> dark_borders(const InkMap& map) {
  constexpr uint8_t kSolidInk = InkMap::kMostInk * 3 / 4;
  constexpr int kReach = 2;  // the edge of the dark is not solid
  const int width = map.width(), height = map.height();
  const auto at = [&](int x, int y) { return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x); };

  const auto is_solid = [&](int x, int y) {
    for (int j = std::max(0, y - 1); j <= std::min(height - 1, y + 1); ++j)
      for (int i = std::max(0, x - 1); i <= std::min(width - 1, x + 1); ++i)
        if (map.row(j)[static_cast<size_t>(i)] < kSolidInk) return false;
    return true;
  };
  std::vector<uint8_t> seen(static_cast<size_t>(width) * static_cast<size_t>(height));
  std::vector<std::pair<int, int>> dark;
  const auto visit = [&](int x, int y) {
    if (x < 0 || y < 0 || x >= width || y >= height || seen[at(x, y)] != 0) return;
    seen[at(x, y)] = 1;
    if (is_solid(x, y)) dark.emplace_back(x, y);
  };
  for (int x = 0; x < width; ++x) visit(x, 0), visit(x, height - 1);
  for (int y = 0; y < height; ++y) visit(0, y), visit(width - 1, y);
  for (size_t i = 0; i < dark.size(); ++i) {
    const auto [x, y] = dark[i];
    visit(x - 1, y), visit(x + 1, y), visit(x, y - 1), visit(x, y + 1);
  }
  std::ranges::fill(seen, uint8_t{0});
  for (const auto& [x, y] : dark)
    for (int j = std::max(0, y - kReach); j <= std::min(height - 1, y + kReach); ++j)
      std::fill(seen.begin() + static_cast<ptrdiff_t>(at(std::max(0, x - kReach), j)),
                seen.begin() + static_cast<ptrdiff_t>(at(std::min(width - 1, x + kReach), j)) + 1, uint8_t{1});
  return seen;
}

void remove_cells(InkMap& map, const InkMap& listed, std::span<const uint8_t> list) {
  const int across = listed.cell().width / map.cell().width, down = listed.cell().height / map.cell().height;
  for (int y = 0; y < listed.height(); ++y)
    for (int x = 0; x < listed.width(); ++x) {
      if (list[static_cast<size_t>(y) * static_cast<size_t>(listed.width()) + static_cast<size_t>(x)] == 0) continue;
      for (int row = y * down; row < std::min((y + 1) * down, map.height()); ++row)
        for (int cell = x * across; cell < std::min((x + 1) * across, map.width()); ++cell)
          map.row(row)[static_cast<size_t>(cell)] = 0;
    }
}

}  // namespace vorel::programs
