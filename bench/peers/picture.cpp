#include "peers/picture.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace peers {
namespace {

class Random {
 public:
  unsigned below(unsigned count) {
    state_ = state_ * 6'364'136'223'846'793'005U + 1'442'695'040'888'963'407U;
    return static_cast<unsigned>((state_ >> 33) * count >> 31);
  }

 private:
  std::uint64_t state_ = 2026;
};

// A byte per pixel: 1 where there is ink. Letters are 5 x 7 cells of four pixels; every fifth place is empty.
std::vector<std::uint8_t> ink_of(int width, int height) {
  constexpr int kCell = 4, kLetterWidth = 6 * kCell, kLineHeight = 13 * kCell, kMargin = 2 * kLineHeight, kRuleEvery = 10;
  Random random;
  bool letters[26][7][5];
  for (auto& letter : letters)
    for (auto& row : letter)
      for (bool& cell : row) cell = random.below(5) < 2;
  std::vector<std::uint8_t> ink(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  const auto at = [&](int x, int y) -> std::uint8_t& {
    return ink[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
  };
  for (int top = kMargin, line = 1; top + kLineHeight + kMargin <= height; top += kLineHeight, ++line)
    for (int left = kMargin; left + kLetterWidth + kMargin <= width; left += kLetterWidth) {
      if (line % kRuleEvery == 0) {
        for (int x = left; x < left + kLetterWidth; ++x) at(x, top) = at(x, top + 1) = 1;
      } else if (random.below(5) != 0) {
        const auto& letter = letters[random.below(26)];
        for (int y = 0; y < 7 * kCell; ++y)
          for (int x = 0; x < 5 * kCell; ++x) at(left + x, top + y) = letter[y / kCell][x / kCell];
      }
    }
  for (std::size_t specks = ink.size() / 2'000; specks > 0; --specks)
    ink[random.below(static_cast<unsigned>(ink.size()))] ^= 1;
  return ink;
}

void put(std::vector<std::uint8_t>& bytes, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

// Runs of at least three pixels, literals in between.
void encode_row(const std::uint8_t* row, int width, std::vector<std::uint8_t>& codes) {
  const auto run_at = [&](int x) {
    int end = x + 1;
    while (end < width && end - x < 255 && row[end] == row[x]) ++end;
    return end - x;
  };
  for (int x = 0; x < width;) {
    if (const int run = run_at(x); run >= 3 || width - x < 3) {
      put(codes, static_cast<std::uint32_t>(run) | std::uint32_t{row[x]} << 8, 2);
      x += run;
      continue;
    }
    int end = x + 3;
    while (end < width && end - x < 254 && run_at(end) < 3) ++end;
    put(codes, static_cast<std::uint32_t>(end - x) << 8, 2);
    codes.insert(codes.end(), row + x, row + end);
    if ((end - x) % 2 != 0) codes.push_back(0);
    x = end;
  }
}

}  // namespace

Picture make_picture(Extent extent) {
  const auto [width, height, depth, is_colored] = extent;
  Picture picture{extent, std::vector<std::uint8_t>(extent.bytes())};
  const std::vector<std::uint8_t> ink = ink_of(width, height);
  Random random;
  for (int y = 0; y < height; ++y) {
    const std::uint8_t* marks = ink.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    std::uint8_t* row = picture.bytes.data() + static_cast<std::size_t>(y) * extent.row_bytes();
    for (int x = 0; x < width; ++x) {
      const int across = static_cast<int>(200LL * x / width), down = static_cast<int>(200LL * y / height);
      const auto noisy = [&](int level) {
        return static_cast<std::uint8_t>(marks[x] != 0 ? level / 8 : 28 + level + static_cast<int>(random.below(17)));
      };
      if (depth == 1) {
        if (marks[x] == 0) row[x / 8] = static_cast<std::uint8_t>(row[x / 8] | 0x80 >> x % 8);
      } else if (is_colored) {
        const int area = (x / 160 + y / 90 * 5) % 216;
        row[x] = static_cast<std::uint8_t>(marks[x] != 0   ? 0
                                           : area % 4 == 0 ? area / 2 + static_cast<int>(random.below(3))
                                                           : area);
      } else if (depth == 8) {
        row[x] = noisy((across + down) / 2);
      } else {
        row[3 * x] = noisy(across);
        row[3 * x + 1] = noisy(down);
        row[3 * x + 2] = noisy(200 - (across + down) / 2);
      }
    }
  }
  return picture;
}

std::vector<Color> palette_of(Extent extent) {
  std::vector<Color> colors;
  const auto gray = [](int level) {
    return Color{static_cast<std::uint8_t>(level), static_cast<std::uint8_t>(level), static_cast<std::uint8_t>(level)};
  };
  if (extent.depth == 1) return {gray(0), gray(255)};
  for (int i = 0; i < 256 && extent.depth == 8; ++i) {
    if (!extent.is_colored)
      colors.push_back(gray(i));
    else if (i < 216)
      colors.push_back({static_cast<std::uint8_t>(i % 6 * 51), static_cast<std::uint8_t>(i / 6 % 6 * 51),
                        static_cast<std::uint8_t>(i / 36 * 51)});
    else
      colors.push_back(gray(3 + 6 * (i - 216)));
  }
  return colors;
}

std::vector<std::uint8_t> bitmap_file(const Picture& picture, bool is_encoded) {
  const Extent extent = picture.extent;
  const std::vector<Color> palette = palette_of(extent);
  std::vector<std::uint8_t> pixels;
  for (int y = extent.height - 1; y >= 0; --y) {
    if (is_encoded) {
      encode_row(picture.row(y), extent.width, pixels);
      put(pixels, y == 0 ? 0x100 : 0, 2);  // end of the bitmap, end of the line
      continue;
    }
    pixels.insert(pixels.end(), picture.row(y), picture.row(y) + extent.row_bytes());
    pixels.resize((pixels.size() + 3) / 4 * 4);
  }
  const auto offset = static_cast<std::uint32_t>(14 + 40 + 4 * palette.size()),
             size = static_cast<std::uint32_t>(pixels.size());
  std::vector<std::uint8_t> file{'B', 'M'};
  for (const std::uint32_t value :
       {offset + size, 0u, offset, 40u, static_cast<std::uint32_t>(extent.width), static_cast<std::uint32_t>(extent.height)})
    put(file, value, 4);
  put(file, 1, 2);
  put(file, static_cast<std::uint32_t>(extent.depth), 2);
  for (const std::uint32_t value :
       {is_encoded ? 1u : 0u, size, 11'811u, 11'811u, static_cast<std::uint32_t>(palette.size()), 0u})
    put(file, value, 4);
  for (const Color& color : palette) file.insert(file.end(), {color.blue, color.green, color.red, 0});
  file.insert(file.end(), pixels.begin(), pixels.end());
  return file;
}

std::vector<std::uint8_t> read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(file.tellg()));
  file.seekg(0);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

void write_file(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

}  // namespace peers
