// The header of a metafile, and the size that it states for its picture.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "core/view.h"
#include "frame/error.h"
#include "platform/memory.h"

namespace vorel::metafile {

// Dots per inch.
struct Resolution {
  int x = 0, y = 0;
};

inline constexpr uint32_t kPlaceableKey = 0x9AC6CDD7;
inline constexpr size_t kPlaceableBytes = 22;

// A header that programs put in front of a Windows metafile to state its size. Its 32-bit fields are not aligned.
#pragma pack(push, 2)
struct PlaceableHeader {
  uint32_t key = kPlaceableKey;
  uint16_t handle = 0;
  int16_t left = 0, top = 0, right = 0, bottom = 0;
  uint16_t units_per_inch = 0;
  uint32_t reserved = 0;
  uint16_t checksum = 0;
};
#pragma pack(pop)
static_assert(sizeof(PlaceableHeader) == kPlaceableBytes);

// The 18-byte header of every Windows metafile.
#pragma pack(push, 2)
struct WindowsMetafileHeader {
  uint16_t type;
  uint16_t header_words;
  uint16_t version;
  uint32_t words;  // in the whole metafile
  uint16_t objects;
  uint32_t largest_record_words;
  uint16_t parameters;
};
#pragma pack(pop)
inline constexpr size_t kWindowsHeaderBytes = 18;
static_assert(sizeof(WindowsMetafileHeader) == kWindowsHeaderBytes);

// The part of an enhanced metafile's first record that is used.
struct Edges {
  int32_t left, top, right, bottom;
};
struct EnhancedHeader {
  uint32_t type, record_bytes;
  Edges bounds;  // in dots of the device it was made for
  Edges frame;   // in hundredths of a millimetre
  uint32_t signature, version;
  uint32_t bytes;  // in the whole metafile
  uint32_t records;
  uint16_t objects;  // existing at a time, plus one
  std::array<uint8_t, 42> rest;
};
inline constexpr size_t kEnhancedHeaderBytes = 100;
static_assert(sizeof(EnhancedHeader) == kEnhancedHeaderBytes);

// The exclusive or of the words in front of the checksum.
uint16_t checksum_of(const PlaceableHeader& header);

// The header of a picture of this size, shown at the screen's resolution. Sizes are clamped to its fields.
PlaceableHeader placeable_header_for(Size pixels, Resolution screen);

// The frame of an enhanced metafile for a picture of this size. It assumes 96 pixels per inch on any screen.
Edges enhanced_frame_for(Size pixels);

// The size of a picture: lengths, and their units per inch.
struct Extent {
  int64_t width = 5, height = 5;
  int64_t x_units = 1, y_units = 1;
};

// The facts in a metafile's first bytes.
struct MetafileStart {
  bool is_enhanced = false;
  size_t offset = 0;  // of the metafile itself, which a placeable header may precede
  uint64_t bytes = 0;
  Extent extent;

  // A Windows metafile gets twice the memory that it needs.
  ByteCount block_bytes() const { return ByteCount(bytes) * (is_enhanced ? 1 : 2); }
};

// The longest possible start.
inline constexpr size_t kMetafileStartBytes = kPlaceableBytes + kEnhancedHeaderBytes;

// Reads a file's first bytes, kMetafileStartBytes or the whole file. Fails if they end within a header.
Result<MetafileStart> read_metafile_start(std::span<const uint8_t> start);

// The size in pixels, clamped to int; five inches square for empty extents and for invalid units.
Size pixels_of(const Extent& extent, Resolution screen);
Size five_inches(Resolution screen);

}  // namespace vorel::metafile
