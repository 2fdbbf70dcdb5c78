// Windows bitmaps as other programs write them: with any of the headers that there are, colour masks, run-length codes, rows
// from the top. The library refuses many of them, and completes damaged ones without a word.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>

#include "common/picture.h"

namespace vorel::programs {

// What the headers say.
struct BitmapFacts {
  DibHeader header;                // as one of 40 bytes, whichever there is
  std::string variant;             // of the headers, in words
  std::string compression;         // in words
  bool has_masks = false;          // for the colours of 16 or 32 bits
  bool has_opacity = false;        // a mask of its own, which read_bitmap() leaves out
  std::optional<uint32_t> colors;  // in the table or, without one, that the bits of a pixel tell apart
};

// Whether a stream begins as a bitmap does: with a file header, the header of an array of bitmaps, or that of a DIB.
bool begins_as_bitmap(std::istream& stream);

// Both read the bitmap in the first `bytes` bytes of a stream; of an array, its first one. They throw Problem if it is
// damaged or cut off.
BitmapFacts inspect_bitmap(std::istream& stream, uint64_t bytes);

// Colour masks make 24 bits, without what they count as opacity; anything else comes as it is stored.
Picture read_bitmap(std::istream& stream, uint64_t bytes);

}  // namespace vorel::programs
