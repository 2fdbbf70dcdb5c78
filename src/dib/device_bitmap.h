// Packed DIBs and device bitmaps, both ways.
#pragma once

#include <optional>

#include "dib/packed_dib.h"
#include "frame/error.h"
#include "platform/windows/gdi.h"

namespace vorel {

// None for what is no bitmap. bmWidthBytes is that of the rows that copy_bits_out gives.
std::optional<BITMAP> describe(HBITMAP bitmap);

// Copies the bits of a bitmap out; false unless the system hands out just as many bytes as asked for.
bool copy_bits_out(HBITMAP bitmap, std::span<uint8_t> bits);

// `palette` may be null. Every failure is unreported. Where the screen is asked for its palette and has none, the thread's
// code says so although the conversion goes on without.
Result<OwnedDib> dib_of(HBITMAP bitmap, HPALETTE palette);

Result<OwnedBitmap> bitmap_of(const LockedDib& dib);

// Reads a bitmap back into a DIB, in the DIB's own size and format: pixels, and of its colour table what the system fills in,
// which otherwise gets the screen's colours. False when memory is short.
bool read_back(HBITMAP bitmap, const LockedDib& dib);

Result<OwnedBitmap> monochrome_copy(HBITMAP bitmap);

Result<OwnedBitmap> duplicate(HBITMAP bitmap);

}  // namespace vorel
