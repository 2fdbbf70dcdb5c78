// TGA pictures.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <vorel32.h>

#include "common/dib.h"
#include "common/file.h"

namespace codec {

#pragma pack(push, 1)
// The header as it lies in a file. A name of any text, the colour map and the pixels follow.
struct TgaHeader {
  enum Kind : uint8_t { kIndexed = 1, kColor = 2, kGray = 3, kRunLength = 8 };  // the last is added to one of the others
  enum Descriptor : uint8_t { kAlphaBits = 0x0F, kRightToLeft = 0x10, kTopDown = 0x20, kInterleaved = 0xC0 };

  uint8_t name_bytes;
  uint8_t has_map;
  uint8_t kind;
  uint16_t map_first, map_count;
  uint8_t map_depth;
  uint16_t left, bottom;
  uint16_t width, height;
  uint8_t depth;
  uint8_t descriptor;

  int base_kind() const { return kind & ~kRunLength; }
  bool is_compressed() const { return (kind & kRunLength) != 0; }
};
#pragma pack(pop)
static_assert(sizeof(TgaHeader) == 18);

// A packet is a byte and then either a pixel that is repeated, or pixels as they are.
inline constexpr uint8_t kTgaRunMark = 0x80;
inline constexpr size_t kTgaLongestPacket = 128;

// Throws Failure.
[[nodiscard]] HGLOBAL read_tga(std::span<const uint8_t> file);

class TgaWriter {
 public:
  // Throws Failure for a picture that the format cannot state.
  TgaWriter(const SourceDib& dib, bool is_compressed);

  // Rows go from the bottom up. Throws Failure.
  void write(const OutputFile& file) const;

 private:
  void write_map(const OutputFile& file) const;
  void write_rows(const OutputFile& file) const;

  const SourceDib& dib_;
  TgaHeader header_{};
};

// Ends a file as the format's second version does. Throws Failure.
void write_tga_footer(const OutputFile& file);

}  // namespace codec
