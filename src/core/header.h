// The packed DIB as it lies in memory, and the rules that find its colour table and pixel rows.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>

#include "core/byte_count.h"

namespace vorel {

inline constexpr uint32_t kHeaderBytes = 40;
inline constexpr uint32_t kCoreHeaderBytes = 12;
inline constexpr uint32_t kFileHeaderBytes = 14;
inline constexpr uint16_t kBitmapFileType = 0x4D42;  // "BM"

enum class Compression : uint32_t { kNone = 0, kRle8 = 1, kRle4 = 2, kBitFields = 3 };

// The 40 bytes in front of every packed DIB.
struct DibHeader {
  uint32_t size = kHeaderBytes;  // bytes in this header
  int32_t width = 0;             // pixels
  int32_t height = 0;            // rows; positive means stored bottom-up
  uint16_t planes = 1;
  uint16_t depth = 0;  // bits per pixel
  Compression compression = Compression::kNone;
  uint32_t image_bytes = 0;  // 0: stride times height
  int32_t x_per_metre = 0;   // pixels per metre
  int32_t y_per_metre = 0;
  uint32_t colors_used = 0;  // 0: the number that the depth implies
  uint32_t colors_important = 0;
};
static_assert(sizeof(DibHeader) == kHeaderBytes);

// The older header, found only in files.
struct CoreHeader {
  uint32_t size;
  uint16_t width, height, planes, depth;
};
static_assert(sizeof(CoreHeader) == kCoreHeaderBytes);

// The first bytes of a bitmap file. Its 32-bit fields are not aligned, which is why it is packed.
#pragma pack(push, 2)
struct FileHeader {
  uint16_t type;
  uint32_t file_bytes;
  uint16_t reserved1, reserved2;
  uint32_t bits_offset;
};
#pragma pack(pop)
static_assert(sizeof(FileHeader) == kFileHeaderBytes);

// A colour table entry, and an entry of a core header's table.
struct Rgb {
  uint8_t blue, green, red, reserved;
  friend bool operator==(const Rgb&, const Rgb&) = default;
};
struct RgbTriple {
  uint8_t blue, green, red;
};

// Bytes from one pixel row to the next, for a width of at least 0.
constexpr ByteCount row_stride(uint32_t bits_per_pixel, int32_t width) {
  return (uint64_t{bits_per_pixel} * static_cast<uint32_t>(width) + 31) / 32 * 4;
}

// Bytes in the rows of an uncompressed picture, for a width and height of at least 0.
inline ByteCount rows_bytes(const DibHeader& header) {
  return row_stride(header.depth, header.width) * static_cast<uint32_t>(header.height);
}

// A picture with a zero or negative side has no pixels, unless it is refused.
inline bool has_pixels(const DibHeader& header) { return header.width > 0 && header.height > 0; }
inline ByteCount pixel_bytes(const DibHeader& header) { return has_pixels(header) ? rows_bytes(header) : 0; }

// Bytes in the rows as the header states them.
inline ByteCount stated_image_bytes(const DibHeader& header) {
  return header.image_bytes != 0 ? ByteCount(header.image_bytes) : rows_bytes(header);
}

// Colours that the depth implies: 2, 16 or 256, or none.
constexpr uint32_t implied_colors(uint32_t depth) { return depth == 1 || depth == 4 || depth == 8 ? 1u << depth : 0; }

// Entries in the colour table. A header of 12 bytes is read as a CoreHeader.
inline uint32_t DIBNumColors(const DibHeader& header) {
  if (header.size == kCoreHeaderBytes) {
    CoreHeader core;
    std::memcpy(&core, &header, sizeof core);
    return implied_colors(core.depth);
  }
  if (header.size == kHeaderBytes && header.colors_used != 0) return header.colors_used;
  return implied_colors(header.depth);
}

// Bytes in the colour table: only a 40-byte header has entries of four bytes.
inline ByteCount palette_bytes(const DibHeader& header) {
  return ByteCount(DIBNumColors(header)) * (header.size == kHeaderBytes ? sizeof(Rgb) : sizeof(RgbTriple));
}

// Bytes from the block's start to the first pixel row.
inline ByteCount bits_offset(const DibHeader& header) { return ByteCount(header.size) + palette_bytes(header); }

// The first pixel row of a complete packed DIB.
template <class Byte>
Byte* FindDIBBits(Byte* dib, const DibHeader& header) {
  return dib + bits_offset(header).value();
}

// The header of a header-sized or larger piece of memory.
inline DibHeader read_header(std::span<const uint8_t> bytes) {
  DibHeader header;
  std::memcpy(&header, bytes.data(), sizeof header);
  return header;
}

inline void write_header(std::span<uint8_t> bytes, const DibHeader& header) {
  std::memcpy(bytes.data(), &header, sizeof header);
}

}  // namespace vorel
