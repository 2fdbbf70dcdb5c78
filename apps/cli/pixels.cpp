#include "cli/pixels.h"

#include <algorithm>
#include <climits>

#include "cli/failure.h"

namespace vorel::cli {
namespace {

void set_image_size(Picture& picture) {
  picture.header.biSizeImage = static_cast<uint32_t>(stored_row_bytes(picture.header) * row_count(picture.header));
  const DibLock lock(picture.dib);
  std::memcpy(lock.bytes().data(), &picture.header, sizeof picture.header);
}

std::span<uint8_t> table_of(const DibLock& lock) {
  return lock.bytes().subspan(sizeof(BITMAPINFOHEADER), PaletteSize(lock.bytes().data()));
}

// A black picture of 8 bits with a grey ramp.
Picture blank_with_greys(const std::string& label, BITMAPINFOHEADER header) {
  constexpr size_t kColors = 256;
  header.biBitCount = 8;
  header.biClrUsed = kColors;
  header.biClrImportant = 0;
  Picture gray{.label = label, .header = header, .dib = {}};
  const uint64_t bytes = sizeof header + kColors * sizeof(RGBQUAD) + stored_row_bytes(header) * row_count(header);
  gray.dib.reset(GlobalAlloc(GHND, static_cast<size_t>(bytes)));  // less than the 24-bit picture that is there
  if (!gray.dib) throw std::bad_alloc();
  const DibLock lock(gray.dib);
  for (size_t i = 0; i < kColors * sizeof(RGBQUAD); ++i)
    lock.bytes()[sizeof header + i] = static_cast<uint8_t>(i % sizeof(RGBQUAD) == 3 ? 0 : i / sizeof(RGBQUAD));
  set_image_size(gray);
  return gray;
}

void for_each_byte(Picture& picture, auto&& change) {
  const DibLock lock(picture.dib);
  const auto rows = lock.pixels().first(static_cast<size_t>(stored_row_bytes(picture.header) * row_count(picture.header)));
  std::ranges::transform(rows, rows.begin(), change);
}

}  // namespace

Pixels::Pixels(const DibLock& lock) : header_(lock.header()), table_(table_of(lock)), rows_(lock.pixels()) {}

std::span<uint8_t> Pixels::row(int y) const {
  const auto stride = static_cast<size_t>(stored_row_bytes(header_));
  return rows_.subspan(static_cast<size_t>(height() - 1 - y) * stride, stride);
}

uint32_t Pixels::at(int x, int y) const {
  const auto bytes = row(y);
  const uint64_t bit = static_cast<uint64_t>(x) * header_.biBitCount;
  const auto byte = static_cast<size_t>(bit / 8);
  if (depth() == 24) return bytes[byte] | uint32_t{bytes[byte + 1]} << 8 | uint32_t{bytes[byte + 2]} << 16;
  const auto mask = (1u << depth()) - 1;
  return bytes[byte] >> (8 - header_.biBitCount - bit % 8) & mask;
}

void Pixels::set(int x, int y, uint32_t value) {
  const auto bytes = row(y);
  const uint64_t bit = static_cast<uint64_t>(x) * header_.biBitCount;
  const auto byte = static_cast<size_t>(bit / 8);
  if (depth() == 24) {
    for (size_t i = 0; i < 3; ++i) bytes[byte + i] = static_cast<uint8_t>(value >> 8 * i);
    return;
  }
  const uint64_t shift = 8 - header_.biBitCount - bit % 8;
  const auto mask = ((1u << depth()) - 1) << shift;
  bytes[byte] = static_cast<uint8_t>((bytes[byte] & ~mask) | (value << shift & mask));
}

uint32_t Pixels::color_at(int x, int y) const {
  const uint32_t value = at(x, y);
  if (depth() == 24) return value;
  const size_t entry = size_t{value} * sizeof(RGBQUAD);
  if (entry + sizeof(RGBQUAD) > table_.size()) return 0;
  return table_[entry] | uint32_t{table_[entry + 1]} << 8 | uint32_t{table_[entry + 2]} << 16;
}

Picture blank_like(const Picture& picture, int width, int height, int depth) {
  Picture blank{.label = picture.label, .header = picture.header, .dib = {}};
  blank.header.biWidth = width;
  blank.header.biHeight = height;
  blank.header.biBitCount = static_cast<uint16_t>(depth);
  const DibLock source(picture.dib);
  size_t table = PaletteSize(source.bytes().data());
  if (depth == 24) table = blank.header.biClrUsed = blank.header.biClrImportant = 0;
  const uint64_t bytes = sizeof blank.header + table + stored_row_bytes(blank.header) * row_count(blank.header);
  blank.dib.reset(bytes > INT32_MAX ? nullptr : GlobalAlloc(GHND, static_cast<size_t>(bytes)));
  if (!blank.dib)
    throw Failure(ExitCode::kLimit, picture.label, "there is not enough memory for the result; ask for a smaller one");
  std::ranges::copy(source.bytes().subspan(sizeof blank.header, table),
                    DibLock(blank.dib).bytes().begin() + sizeof blank.header);
  set_image_size(blank);
  return blank;
}

Picture in_true_color(const Picture& picture) {
  Picture result = blank_like(picture, picture.header.biWidth, picture.header.biHeight, 24);
  const DibLock source_lock(picture.dib), result_lock(result.dib);
  const Pixels from(source_lock);
  Pixels to(result_lock);
  for (int y = 0; y < from.height(); ++y)
    for (int x = 0; x < from.width(); ++x) to.set(x, y, from.color_at(x, y));
  return result;
}

Dib luminance_of(const Picture& picture) {
  const int width = picture.header.biWidth, height = picture.header.biHeight;
  Picture gray = blank_with_greys(picture.label, picture.header);
  const DibLock source_lock(picture.dib), gray_lock(gray.dib);
  const Pixels from(source_lock);
  Pixels to(gray_lock);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const uint32_t color = from.color_at(x, y);
      to.set(x, y, (30 * (color >> 16) + 59 * (color >> 8 & 0xFF) + 11 * (color & 0xFF)) / 100);
    }
  return std::move(gray.dib);
}

LevelCounts count_levels(const Picture& picture) {
  LevelCounts counts{};
  const DibLock lock(picture.dib);
  const Pixels pixels(lock);
  for (int y = 0; y < pixels.height(); ++y)
    for (int x = 0; x < pixels.width(); ++x) {
      const uint32_t color = pixels.color_at(x, y);
      ++counts[((color & 0xFF) + (color >> 8 & 0xFF) + (color >> 16) + 1) / 3];
    }
  return counts;
}

bool has_gray_ramp(const Picture& picture) {
  const DibLock lock(picture.dib);
  const auto table = table_of(lock);
  if (picture.header.biBitCount != 8 || table.size() != 256 * sizeof(RGBQUAD)) return false;
  for (size_t i = 0; i < table.size(); ++i)
    if (i % 4 != 3 && table[i] != i / 4) return false;
  return true;
}

void complement_bits(Picture& picture) {
  for_each_byte(picture, [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
}

void clear_padding(Picture& picture) {
  const DibLock lock(picture.dib);
  const auto used = static_cast<size_t>(pixel_row_bytes(picture.header)),
             stride = static_cast<size_t>(stored_row_bytes(picture.header));
  const auto spare_bits = used * 8 - static_cast<size_t>(picture.header.biWidth) * picture.header.biBitCount;
  for (size_t y = 0; y < row_count(picture.header); ++y) {
    const auto row = lock.pixels().subspan(y * stride, stride);
    row[used - 1] &= static_cast<uint8_t>(0xFF << spare_bits);
    std::ranges::fill(row.subspan(used), uint8_t{0});
  }
}

int nearest_index(const Picture& picture, uint32_t color) {
  const DibLock lock(picture.dib);
  const auto table = table_of(lock);
  const size_t count = std::min(table.size() / sizeof(RGBQUAD), size_t{1} << std::min<int>(picture.header.biBitCount, 8));
  int nearest = 0, least = INT_MAX;
  for (size_t i = 0; i < count; ++i) {
    int distance = 0;
    for (size_t component = 0; component < 3; ++component) {
      const int difference = table[i * sizeof(RGBQUAD) + component] - static_cast<int>(color >> 8 * component & 0xFF);
      distance += difference * difference;
    }
    if (distance < least) nearest = static_cast<int>(i);
    least = std::min(least, distance);
  }
  return nearest;
}

void exchange_with_first(Picture& picture, int index) {
  if (index == 0) return;
  {
    const DibLock lock(picture.dib);
    const auto table = table_of(lock);
    std::swap_ranges(table.begin(), table.begin() + sizeof(RGBQUAD),
                     table.begin() + static_cast<std::ptrdiff_t>(index * sizeof(RGBQUAD)));
  }
  const int depth = picture.header.biBitCount, mask = (1 << depth) - 1;
  std::array<uint8_t, 256> exchanged{};  // for all pixels of a byte at once
  for (int byte = 0; byte < 256; ++byte)
    for (int shift = 0; shift < 8; shift += depth) {
      const int pixel = byte >> shift & mask, other = pixel == 0 ? index : pixel == index ? 0 : pixel;
      exchanged[static_cast<size_t>(byte)] |= static_cast<uint8_t>(other << shift);
    }
  for_each_byte(picture, [&](uint8_t byte) { return exchanged[byte]; });
}

Picture cut_off(const Picture& picture, int line, Side side) {
  HGLOBAL below = nullptr, above = nullptr;
  if (!CutDIB(picture.dib.get(), line, &below, &above))
    throw Failure(ExitCode::kLimit, picture.label,
                  "there is not enough memory for the result; close programs or scale it down");
  Dib parts[] = {Dib(above), Dib(below)};
  Picture part{.label = picture.label, .header = {}, .dib = std::move(parts[side == Side::kAbove ? 0 : 1])};
  part.header = DibLock(part.dib).header();
  set_image_size(part);  // the library gives both the size of the lower part
  return part;
}

}  // namespace vorel::cli
