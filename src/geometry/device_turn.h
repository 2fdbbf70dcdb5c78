// Turning, mirroring and inverting device bitmaps.
#pragma once

#include "frame/error.h"
#include "geometry/device_bits.h"
#include "platform/windows/gdi.h"

namespace vorel::geometry {

// A new bitmap turned by a quarter.
Result<OwnedBitmap> quarter_turned(HBITMAP bitmap, DeviceTurn turn);

// Rewrites the bitmap.
Result<bool> turn_in_place(HBITMAP bitmap, DeviceTurn turn);

// Inverts every bit of the bitmap by way of the active window's device context. Every failure is unreported.
Result<bool> invert_in_place(HBITMAP bitmap);

}  // namespace vorel::geometry
