// DIBs for tests, made and looked at through the public header alone and without the library's own pixel code.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <vorel32.h>

namespace test {

using Bytes = std::vector<uint8_t>;

// A global block that is freed with its scope.
class Block {
 public:
  Block() = default;
  explicit Block(HGLOBAL handle) : handle_(handle) {}
  Block(Block&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Block& operator=(Block&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Block() { GlobalFree(handle_); }

  explicit operator bool() const { return handle_ != nullptr; }
  HGLOBAL get() const { return handle_; }

 private:
  HGLOBAL handle_ = nullptr;
};

Block block_of(const Bytes& bytes);
Bytes bytes_of(HGLOBAL block);

// Locks on a movable block; takes them back.
int take_locks_back(HGLOBAL block);

Bytes joined(Bytes head, const Bytes& tail);

// A handle that was a block's once.
HGLOBAL dead_handle();

BITMAPINFOHEADER header_of(const Bytes& dib);

// The header of an uncompressed picture; biSizeImage, resolutions and colour counts are left at 0.
BITMAPINFOHEADER header_for(int width, int height, int depth);

// A header with whatever follows it.
Bytes with_header(const BITMAPINFOHEADER& header, const Bytes& rest = {});

// A file header in front of a DIB. Where the rows begin is left to the reader if bits_offset is 0.
Bytes file_of(const Bytes& dib, uint32_t bits_offset = 0);

size_t stride_of(int width, int bits);

// A picture of repeatable noise with a colour table of noise and odd resolutions; the row padding is noise too.
Bytes noise(int width, int height, int depth);

// A picture of at most 8 bits, cut to its first colours; its pixels may go past them.
Bytes with_colors(const Bytes& dib, size_t count);

// The same with a header field changed.
template <class Change>
Bytes with_header_changed(Bytes dib, Change change) {
  BITMAPINFOHEADER header = header_of(dib);
  change(header);
  std::memcpy(dib.data(), &header, sizeof header);
  return dib;
}

// Pixel (x, y) of a picture, y counted from the bottom line.
uint32_t pixel(const Bytes& dib, int x, int y);

// The same pixel in colour: blue, green, red, whatever the depth.
RGBQUAD color_at(const Bytes& dib, int x, int y);

// The colours of all pixels as text, red first, rows from the top: "FF0000 000000/0000FF FFFFFF".
std::string picture_of(const Bytes& dib);

// How far the colours of two pictures are apart in any component at most; more than 255 if their sizes differ.
int largest_difference(const Bytes& a, const Bytes& b);

// A number for all results of a run (FNV-1a), which is the same on every build.
struct Digest {
  uint64_t value = 0xCBF29CE484222325;

  friend bool operator==(const Digest&, const Digest&) = default;

  void add(std::span<const uint8_t> bytes) {
    for (uint8_t byte : bytes) value = (value ^ byte) * 0x100000001B3;
  }
  // Fractions are rounded to the digits that mathematical libraries agree on.
  template <class Number>
  void add_number(Number number) {
    int64_t whole;
    if constexpr (std::is_floating_point_v<Number>)
      whole = std::llround(number * 1e6);
    else
      whole = static_cast<int64_t>(number);
    add({reinterpret_cast<const uint8_t*>(&whole), sizeof whole});
  }
};

// A folder that is removed with its scope.
class TempFolder {
 public:
  TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder();

  std::string path(const std::string& name) const { return (folder_ / name).string(); }

 private:
  std::filesystem::path folder_;
};

void write_file(const std::string& path, const Bytes& bytes);
Bytes read_file(const std::string& path);

}  // namespace test
