// Pages drawn from shapes on paper, at any angle and resolution.
#pragma once

#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <span>

#include "common/picture.h"
#include "core/gray.h"
#include "core/pixel.h"
#include "core/resolution.h"

namespace test {

using vorel::DibHeader;
using vorel::implied_colors;
using vorel::Pixel;
using vorel::Resolution;
using vorel::Rgb;
using vorel::Size;
using vorel::with_depth;
using vorel::programs::Picture;

struct Place {
  double x, y;  // on paper, from the centre, right and down
};
using Shape = std::function<bool(Place)>;

// Greys from black to white, or one of them made a colour, so that the table cannot be mixed.
enum class Table { kGray, kColor };

inline Picture blank_page(Size size, int depth, Table table, Resolution resolution) {
  std::array<Rgb, 256> colors{};
  const std::span<Rgb> used(colors.data(), implied_colors(static_cast<uint32_t>(depth)));
  if (!used.empty()) vorel::write_even_grays(used);
  if (table == Table::kColor && used.size() > 2) used[1].blue = 200;
  DibHeader header{.width = size.width, .height = size.height, .depth = static_cast<uint16_t>(depth)};
  header.x_per_metre = resolution.x;
  header.y_per_metre = resolution.y;
  return Picture::blank(header, used);
}

// Black where the shape is when turned back by some degrees, and white.
inline Picture drawn(Size size, int depth, Table table, Resolution resolution, const Shape& shape, double degrees) {
  Picture page = blank_page(size, depth, table, resolution);
  const double angle = degrees * std::numbers::pi / 180, sine = std::sin(angle), cosine = std::cos(angle);
  const uint32_t white = depth > 8 ? 0xFFFFFF : (1u << depth) - 1;
  with_depth(depth, [&](auto bits) {
    for (int row = 0; row < size.height; ++row)
      for (int column = 0; column < size.width; ++column) {
        const double x = (column + 0.5 - size.width / 2.0) / resolution.x,
                     y = (row + 0.5 - size.height / 2.0) / resolution.y;
        const bool is_black = shape({x * cosine + y * sine, -x * sine + y * cosine});
        Pixel<bits>::store(page.pixels().row_from_top(row).data(), column, is_black ? 0 : white);
      }
  });
  return page;
}

}  // namespace test
