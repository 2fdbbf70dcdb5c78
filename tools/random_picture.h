// Packed DIBs of every kind, valid and damaged, drawn from a seeded sequence.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fmt/format.h>
#include <string>
#include <type_traits>
#include <vector>

#include <vorel32.h>

#include "support/random.h"

using Bytes = std::vector<uint8_t>;

using test::Random;

struct RandomPicture {
  BITMAPINFOHEADER header;
  Bytes bytes;
  std::string name;  // Depth, width, height, biClrUsed, colours, content, oddities.
};

namespace random_picture_parts {

inline void draw_size(Random& random, BITMAPINFOHEADER& header) {
  const int kind = random.between(0, 19);
  header.biWidth = kind == 0 ? random.between(301, 3000) : random.between(1, kind < 8 ? 40 : 300);
  header.biHeight = kind == 1 ? random.between(301, 3000) : random.between(1, kind < 8 ? 40 : 140);
  if (kind == 0) header.biHeight = random.between(1, 24);
  if (kind == 1) header.biWidth = random.between(1, 24);
}

inline const char* draw_colors(Random& random, uint8_t* table, int count) {
  const int kind = random.between(0, 9);
  const bool has_noise_between = random.once_in(3);
  for (int i = 0; i < count; ++i, table += 4) {
    const auto level = static_cast<uint8_t>(count == 1 ? 0 : i * 255 / (count - 1));
    const uint8_t gray = kind < 3 ? level : kind < 5 ? static_cast<uint8_t>(255 - level) : random.byte();
    for (int k = 0; k < 3; ++k)
      table[k] = kind < 7 ? gray : kind == 7 ? static_cast<uint8_t>(random.one_of({0, 255})) : random.byte();
    table[3] = has_noise_between ? random.byte() : uint8_t{0};
  }
  return kind < 3 ? "ramp" : kind < 5 ? "falling" : kind < 7 ? "greys" : kind == 7 ? "corners" : "colours";
}

// Row padding and the bytes behind the rows are drawn like the rows.
inline const char* draw_bytes(Random& random, uint8_t* bytes, size_t count) {
  const int kind = random.between(0, 5);
  const uint8_t flat = random.byte(), step = static_cast<uint8_t>(random.between(1, 7));
  uint8_t ink = 0;
  for (size_t i = 0; i < count; ++i) {
    if (kind == 1 && random.once_in(4)) ink = random.once_in(3) ? random.byte() : static_cast<uint8_t>(~ink);
    switch (kind) {
      case 0: bytes[i] = random.byte(); break;
      case 1: bytes[i] = ink; break;
      case 2: bytes[i] = random.once_in(40) ? random.byte() : flat; break;
      case 3: bytes[i] = static_cast<uint8_t>(i * step / 4); break;
      case 4: bytes[i] = static_cast<uint8_t>(random.one_of({0, 255})); break;
      default: bytes[i] = static_cast<uint8_t>(128 + random.between(-9, 9) + static_cast<int>(i / 64 % 64)); break;
    }
  }
  constexpr const char* kNames[] = {"noise", "strokes", "specks", "gradient", "extremes", "texture"};
  return kNames[kind];
}

// Header fields that lie or are rare.
inline void draw_oddities(Random& random, size_t row_bytes, RandomPicture& picture) {
  BITMAPINFOHEADER& header = picture.header;
  const auto odd = [&](int chance, const char* name, auto& field, int value) {
    if (!random.once_in(chance)) return;
    field = static_cast<std::remove_reference_t<decltype(field)>>(value);
    picture.name += fmt::format(" {} {}", name, value);
  };
  const int image = random.one_of({0, 0, static_cast<int>(row_bytes), random.between(1, 200'000)});
  odd(1, "image", header.biSizeImage, image);
  odd(30, "planes", header.biPlanes, random.one_of({0, 2, 3}));
  odd(30, "compression", header.biCompression, random.between(1, 4));
  odd(50, "height", header.biHeight, -header.biHeight);
  odd(150, "height", header.biHeight, 0);
  odd(150, "width", header.biWidth, random.one_of<int>({0, -header.biWidth}));
  odd(25, "head", header.biSize, random.one_of({0, 12, 64, 108}));
}

// The header in memory, as long as it states.
inline Bytes head_of(const BITMAPINFOHEADER& header) {
  Bytes head(std::max<size_t>(header.biSize, sizeof header), 0x5A);
  std::memcpy(head.data(), &header, sizeof header);
  if (header.biSize != sizeof(BITMAPCOREHEADER)) return head;
  const BITMAPCOREHEADER core{header.biSize, static_cast<WORD>(header.biWidth), static_cast<WORD>(header.biHeight),
                              header.biPlanes, header.biBitCount};
  head.resize(sizeof core);
  std::memcpy(head.data(), &core, sizeof core);
  return head;
}

}  // namespace random_picture_parts

// Mostly of one of the depths.
inline RandomPicture random_picture(Random& random, std::initializer_list<int> depths) {
  using namespace random_picture_parts;
  RandomPicture picture{};
  BITMAPINFOHEADER& header = picture.header;
  header.biSize = sizeof header;
  header.biPlanes = 1;
  const int depth = random.once_in(16) ? random.one_of({0, 1, 2, 4, 8, 16, 24, 32}) : random.one_of(depths);
  header.biBitCount = static_cast<WORD>(depth);
  draw_size(random, header);
  header.biXPelsPerMeter = random.between(0, 20'000);
  header.biYPelsPerMeter = random.between(0, 20'000);
  const int implied = depth <= 8 ? 1 << depth : 0;
  int used = random.once_in(3) ? implied : 0;
  if (random.once_in(8)) used = random.between(1, implied + 40);
  header.biClrUsed = static_cast<uint32_t>(used);
  header.biClrImportant = random.once_in(8) ? 2 : 0;

  const size_t stride = (static_cast<size_t>(depth) * static_cast<size_t>(header.biWidth) + 31) / 32 * 4;
  const size_t row_bytes = stride * static_cast<size_t>(header.biHeight);
  const int colors = used != 0 ? used : implied;
  const size_t table_bytes = static_cast<size_t>(colors) * 4;
  Bytes rest(table_bytes + row_bytes + 64);
  const std::string color_name = draw_colors(random, rest.data(), colors);
  const std::string content = draw_bytes(random, rest.data() + table_bytes, row_bytes + 64);
  picture.name = fmt::format("{}x{}x{} {} {} {}", depth, header.biWidth, header.biHeight, used, color_name, content);
  draw_oddities(random, row_bytes, picture);

  picture.bytes = head_of(header);
  picture.bytes.insert(picture.bytes.end(), rest.begin(), rest.end() - 64);
  const int end = random.between(0, 15), size = static_cast<int>(picture.bytes.size());
  const int more = end < 3 ? random.between(1, 64) : end == 3 ? random.between(-size, -1) : 0;
  if (more > 0) picture.bytes.insert(picture.bytes.end(), rest.end() - 64, rest.end() - 64 + more);
  if (more < 0) picture.bytes.resize(picture.bytes.size() - static_cast<size_t>(-more));
  if (more != 0) picture.name += fmt::format(" block {:+}", more);
  return picture;
}
