// Packed DIBs and device bitmaps, both ways.
#pragma once

#include <optional>

#include "dib/packed_dib.h"
#include "frame/error.h"
#include "platform/windows/gdi.h"

namespace vorel {

// None for a handle that is no bitmap. bmWidthBytes is the row length that copy_bits_out uses.
std::optional<BITMAP> describe(HBITMAP bitmap);

// Copies the bits of a bitmap out; false unless the system returns exactly as many bytes as asked for.
bool copy_bits_out(HBITMAP bitmap, std::span<uint8_t> bits);

// `palette` may be null. Every failure is unreported. If the screen's palette is needed but unavailable, the thread's code
// is set and the conversion continues without it.
Result<OwnedDib> dib_of(HBITMAP bitmap, HPALETTE palette);

// The same in the colours of the screen's palette; the thread's code is set if it has none.
Result<OwnedDib> dib_in_screen_colors(HBITMAP bitmap);

Result<OwnedBitmap> bitmap_of(const LockedDib& dib);
// The same from a handle; a dead one is an unreported failure.
Result<OwnedBitmap> bitmap_of(HGLOBAL handle);

// A bitmap without contents. None when memory is short, for sizes without a pixel, and for sizes that no block could hold:
// systems do not reliably refuse them.
OwnedBitmap empty_bitmap(Size size, int planes, int bits_per_pixel);

// A locked DIB as the system may read it: header, colours and rows, padded with zeros if the block is too short.
class DeviceDib {
 public:
  // None for headers of other than 40 bytes, and when memory is short.
  static std::optional<DeviceDib> of(const LockedDib& dib);

  const DibHeader& header() const { return header_; }
  Size size() const;  // of the picture, whether it is stored bottom-up or top-down
  const BITMAPINFO* info() const { return reinterpret_cast<const BITMAPINFO*>(whole_.bytes().data()); }
  const uint8_t* pixels() const { return FindDIBBits(static_cast<const uint8_t*>(whole_.bytes().data()), header_); }

  // Stretches a part of the picture onto a rectangle of a context, in the context's own units. False when the system fails.
  bool stretch(HDC dc, Rect to, Rect from, DWORD raster_operation) const;

 private:
  DeviceDib(const DibHeader& header, CompleteBytes whole) : header_(header), whole_(std::move(whole)) {}

  DibHeader header_;
  CompleteBytes whole_;
};

// Reads a bitmap back into a DIB, in the DIB's own size and format. The colour table gets the screen's colours, then the
// colours that the system fills in. False when memory is short.
bool read_back(HBITMAP bitmap, const LockedDib& dib);

Result<OwnedBitmap> monochrome_copy(HBITMAP bitmap);

Result<OwnedBitmap> duplicate(HBITMAP bitmap);

}  // namespace vorel
