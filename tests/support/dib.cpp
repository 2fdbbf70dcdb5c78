#include "support/dib.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>

namespace test {

Block block_of(const Bytes& bytes) {
  Block block(GlobalAlloc(GHND, bytes.empty() ? 1 : bytes.size()));
  std::memcpy(GlobalLock(block.get()), bytes.data(), bytes.size());
  GlobalUnlock(block.get());
  return block;
}

Bytes bytes_of(HGLOBAL block) {
  const auto* data = static_cast<const uint8_t*>(GlobalLock(block));
  if (data == nullptr) return {};
  Bytes bytes(data, data + GlobalSize(block));
  GlobalUnlock(block);
  return bytes;
}

int take_locks_back(HGLOBAL block) {
  GlobalLock(block);
  int others = 0;
  while (GlobalUnlock(block)) ++others;
  return others;
}

Bytes joined(Bytes head, const Bytes& tail) {
  head.insert(head.end(), tail.begin(), tail.end());
  return head;
}

HGLOBAL dead_handle() {
  HGLOBAL handle = GlobalAlloc(GHND, 64);
  GlobalFree(handle);
  return handle;
}

BITMAPINFOHEADER header_of(const Bytes& dib) {
  BITMAPINFOHEADER header{};
  if (dib.size() >= sizeof header) std::memcpy(&header, dib.data(), sizeof header);
  return header;
}

BITMAPINFOHEADER header_for(int width, int height, int depth) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<uint16_t>(depth);
  return header;
}

Bytes with_header(const BITMAPINFOHEADER& header, const Bytes& rest) {
  Bytes bytes(sizeof header + rest.size());
  std::memcpy(bytes.data(), &header, sizeof header);
  std::copy(rest.begin(), rest.end(), bytes.begin() + sizeof header);
  return bytes;
}

Bytes file_of(const Bytes& dib, uint32_t bits_offset) {
  BITMAPFILEHEADER header{};
  header.bfType = 0x4D42;
  header.bfSize = static_cast<uint32_t>(sizeof header + dib.size());
  header.bfOffBits = bits_offset;
  Bytes file(header.bfSize);
  std::memcpy(file.data(), &header, sizeof header);
  std::copy(dib.begin(), dib.end(), file.begin() + sizeof header);
  return file;
}

size_t stride_of(int width, int bits) { return (static_cast<size_t>(bits) * static_cast<size_t>(width) + 31) / 32 * 4; }

Bytes noise(int width, int height, int depth) {
  BITMAPINFOHEADER header = header_for(width, height, depth);
  header.biXPelsPerMeter = 11811;
  header.biYPelsPerMeter = 7874;
  const size_t colors = depth <= 8 ? size_t{1} << depth : 0;
  Bytes rest(colors * 4 + stride_of(width, depth) * static_cast<size_t>(height));
  std::minstd_rand random(static_cast<unsigned>(width * 131 + height * 7 + depth));
  for (uint8_t& byte : rest) byte = static_cast<uint8_t>(random() >> 8);
  return with_header(header, rest);
}

Bytes with_colors(const Bytes& dib, size_t count) {
  const auto table = dib.begin() + sizeof(BITMAPINFOHEADER);
  BITMAPINFOHEADER header = header_of(dib);
  header.biClrUsed = static_cast<uint32_t>(count);
  return with_header(header, joined(Bytes(table, table + static_cast<std::ptrdiff_t>(4 * count)),
                                    Bytes(table + (std::ptrdiff_t{4} << header.biBitCount), dib.end())));
}

namespace {

const uint8_t* pixel_rows(const Bytes& dib) {
  const BITMAPINFOHEADER header = header_of(dib);
  const size_t implied = header.biBitCount <= 8 ? size_t{1} << header.biBitCount : 0;
  const size_t colors = header.biClrUsed != 0 ? header.biClrUsed : implied;
  return dib.data() + sizeof header + colors * 4;
}

bool bit(const uint8_t* row, size_t i) { return (row[i / 8] >> (7 - i % 8) & 1) != 0; }

}  // namespace

uint32_t pixel(const Bytes& dib, int x, int y) {
  const BITMAPINFOHEADER header = header_of(dib);
  const size_t depth = header.biBitCount;
  const uint8_t* row = pixel_rows(dib) + static_cast<size_t>(y) * stride_of(header.biWidth, header.biBitCount);
  uint32_t value = 0;
  for (size_t i = 0; i < depth; ++i) value = value << 1 | bit(row, static_cast<size_t>(x) * depth + i);
  return value;
}

RGBQUAD color_at(const Bytes& dib, int x, int y) {
  const uint32_t value = pixel(dib, x, y);
  RGBQUAD color{};
  if (header_of(dib).biBitCount <= 8) {
    std::memcpy(&color, dib.data() + sizeof(BITMAPINFOHEADER) + value * sizeof color, sizeof color);
  } else {
    color = {static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value), 0};
  }
  return color;
}

std::string picture_of(const Bytes& dib) {
  std::string text;
  const BITMAPINFOHEADER header = header_of(dib);
  for (int y = header.biHeight - 1; y >= 0; --y)
    for (int x = 0; x < header.biWidth; ++x) {
      const RGBQUAD color = color_at(dib, x, y);
      char hex[8];
      std::snprintf(hex, sizeof hex, "%02X%02X%02X", color.rgbRed, color.rgbGreen, color.rgbBlue);
      text.append(hex).append(x + 1 < header.biWidth ? " " : y > 0 ? "/" : "");
    }
  return text;
}

int largest_difference(const Bytes& a, const Bytes& b) {
  const BITMAPINFOHEADER size = header_of(a), other = header_of(b);
  if (size.biWidth != other.biWidth || size.biHeight != other.biHeight) return 256;
  int largest = 0;
  for (int y = 0; y < size.biHeight; ++y)
    for (int x = 0; x < size.biWidth; ++x) {
      const RGBQUAD p = color_at(a, x, y), q = color_at(b, x, y);
      largest = std::max(
          {largest, std::abs(p.rgbBlue - q.rgbBlue), std::abs(p.rgbGreen - q.rgbGreen), std::abs(p.rgbRed - q.rgbRed)});
    }
  return largest;
}

TempFolder::TempFolder() {
  std::random_device random;
  folder_ = std::filesystem::temp_directory_path() / ("vorel-test-" + std::to_string(random()));
  std::filesystem::create_directories(folder_);
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void write_file(const std::string& path, const Bytes& bytes) {
  // Systems take care of what is written over, at the price of waiting for the disk.
  std::error_code in_use;
  std::filesystem::remove(path, in_use);
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

Bytes read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace test
