// PCX pictures.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include <vorel32.h>

#include "common/dib.h"
#include "common/file.h"

namespace codec {

struct PcxColor {
  uint8_t red, green, blue;
};

// The header as stored in a file. A picture is its lines from the top, each stored plane after plane.
struct PcxHeader {
  static constexpr uint8_t kSignature = 10;
  enum Encoding : uint8_t { kPlain = 0, kRunLength = 1 };
  enum PaletteKind : uint16_t { kColorPalette = 1, kGrayPalette = 2 };

  uint8_t signature;
  uint8_t version;
  uint8_t encoding;
  uint8_t plane_depth;  // bits per pixel of a plane
  uint16_t left, top, right, bottom;
  uint16_t dpi_x, dpi_y;
  std::array<PcxColor, 16> colors;
  uint8_t reserved;
  uint8_t planes;
  uint16_t plane_bytes;  // of a line
  uint16_t palette_kind;
  std::array<uint8_t, 58> unused;
};
static_assert(sizeof(PcxHeader) == 128);

// In front of the 256 colours that end a file of 8 bits.
inline constexpr uint8_t kPcxTableMark = 12;

// Bytes with the two upper bits set are counts, followed by the byte to repeat.
inline constexpr uint8_t kPcxRunMark = 0xC0;
inline constexpr uint8_t kPcxLongestRun = 63;

// Takes the start of a file, or of a page of one. Throws Failure unless read_pcx() supports the header.
void check_pcx_start(std::span<const uint8_t> start);

// Reads a file, or a page of one. Throws Failure.
[[nodiscard]] HGLOBAL read_pcx(std::span<const uint8_t> file);

class PcxWriter {
 public:
  // Throws Failure for a picture that the format cannot state.
  explicit PcxWriter(const SourceDib& dib);

  // Writes at the file's position. Throws Failure.
  void write(const OutputFile& file) const;

 private:
  void suit_readers_without_tables();
  void write_colors_of_8_bits(const OutputFile& file) const;
  void write_lines(const OutputFile& file) const;

  const SourceDib& dib_;
  PcxHeader header_{};
  uint8_t kept_bits_ = 0xFF, inversion_ = 0;  // mask and inversion applied to each byte of a row
};

}  // namespace codec
