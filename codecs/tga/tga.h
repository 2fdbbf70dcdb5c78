// TGA pictures.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include <vorel32.h>

#include "common/dib.h"
#include "common/file.h"

namespace codec {

#pragma pack(push, 1)
// The file header. The picture's name, the colour map and the pixels follow.
struct TgaHeader {
  enum Kind : uint8_t { kIndexed = 1, kColor = 2, kGray = 3, kRunLength = 8 };  // kRunLength is added to one of the others
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

// At the end of files of the format's second version.
struct TgaFooter {
  static constexpr std::array<char, 18> kSignature = {"TRUEVISION-XFILE."};

  uint32_t extension, developer_area;  // file offsets; 0 for none
  std::array<char, 18> signature;
};

struct TgaExtension {
  enum AlphaKind : uint8_t { kNoAlpha = 0, kNoUse = 1, kNoUseButKept = 2, kStraight = 3, kPremultiplied = 4 };

  uint16_t size;
  std::array<uint8_t, 492> unused;
  uint8_t alpha_kind;
};
#pragma pack(pop)
static_assert(sizeof(TgaHeader) == 18 && sizeof(TgaFooter) == 26 && sizeof(TgaExtension) == 495);

// A packet is a count byte, then one pixel to repeat or that many literal pixels.
inline constexpr uint8_t kTgaRunMark = 0x80;
inline constexpr size_t kTgaLongestPacket = 128;

// Takes the start of a file. Throws Failure unless it is a header that read_tga() supports.
void check_tga_start(std::span<const uint8_t> start);

// Throws Failure.
[[nodiscard]] HGLOBAL read_tga(std::span<const uint8_t> file);

class TgaWriter {
 public:
  // Throws Failure for a picture that the format cannot state. Pictures with a colour map are never compressed.
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
