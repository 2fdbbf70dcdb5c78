// Scaling packed DIBs.
#pragma once

#include "dib/packed_dib.h"
#include "kernels/scale/scale.h"

namespace vorel::geometry {

// A new DIB of this size. 4, 8 and 24 bits are interpolated and use the low 16 bits of width and height; 1 bit uses the
// nearest pixel.
Result<OwnedDib> scaled(const LockedDib& source, kernels::Interpolation interpolation, uint32_t width, uint32_t height);

// A new DIB with the first stored rows and columns of a grey picture, of the size `area`, magnified.
Result<OwnedDib> magnified(const LockedDib& source, Size area, int x_factor, int y_factor,
                           kernels::Interpolation interpolation);

// A new DIB of this size from a rectangle of another. Its image has a row and 16 bytes to spare at the end, and its
// header keeps the image size of the source. Reports nothing.
Result<OwnedDib> ScaleDIBRect(const LockedDib& source, Rect rect, Size size);

}  // namespace vorel::geometry
