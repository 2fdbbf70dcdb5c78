// Run-length codes of pictures with 8 and 4 bits per pixel.
//
// Codes are pairs of bytes. First byte n > 0: a run of n pixels of the second byte, which at 4 bits holds two pixels that
// take turns, the high half first. First byte 0: the second one is a mark (below) or, from 3 on, the number of pixels that
// follow literally, padded to an even number of bytes. Rows come in the order in which a packed DIB stores them.
#pragma once

#include <cstdint>
#include <span>

#include "core/byte_count.h"
#include "core/view.h"
#include "kernels/levels.h"

namespace vorel::kernels {

// Second bytes below 3 behind a first byte of 0. A delta is followed by the columns and then the rows to move.
enum class RleMark : uint8_t { kEndOfLine = 0, kEndOfBitmap = 1, kDelta = 2 };

// The encoder's decisions depend on up to this many bytes behind a row's last one, as they lie in memory.
inline constexpr size_t kBytesBehindRow = 2;

// The most bytes that the codes of a picture of 8 or 4 bits can take, for a width and height of at least 0.
//
// No byte of a row costs more than two: that is the cost of a pixel, or at 4 bits a pair, as a run of its own, and longer
// runs and literals cost no more per byte. Only a last 8-bit pixel that differs from the byte behind it is written as two,
// four bytes for one; but it follows a run of two or more or a literal of 250, which have saved these bytes, unless it is
// the row's only pixel. Short rows do cost two for each byte: at 8 bits rows of 2 to 6 pixels, at 4 bits rows of up to 8.
constexpr ByteCount most_code_bytes(int depth, int width, int height) {
  constexpr uint64_t kEnd = 2;
  const bool lone_pixel = depth == 8 && width == 1;
  const uint64_t row = lone_pixel ? 4 : 2 * uint64_t{row_bytes(depth, width)};
  return ByteCount(row + kEnd) * static_cast<uint32_t>(height) + kEnd;
}

struct RleTable {
  // Writes the codes of a picture of 8 or 4 bits, end of bitmap included, and returns how many bytes they take.
  //   last_row  a copy of the row stored last, with kBytesBehindRow bytes behind it; each other row is followed by the next
  //   codes     room for most_code_bytes
  size_t (*encode)(ConstDibView picture, const uint8_t* last_row, std::span<uint8_t> codes);

  // Decodes codes of any content onto a picture of 8 or 4 bits, up to their end or the end of bitmap. Pixels outside the
  // picture are dropped.
  void (*decode)(std::span<const uint8_t> codes, DibView picture);
};

const RleTable& rle(CpuLevel level = cpu_level());

}  // namespace vorel::kernels
