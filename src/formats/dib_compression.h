// Run-length compression of packed DIBs.
#pragma once

#include "dib/packed_dib.h"
#include "frame/error.h"

namespace vorel {

// Both take the colour table to have 1 << depth entries whatever the header counts, and carry it over whole: the pixels or
// codes lie behind that many.

// A new DIB with the pixels of an uncompressed one of 8 or 4 bits as codes.
Result<OwnedDib> compressed(const LockedDib& source);

// A new uncompressed DIB with the picture that codes draw.
Result<OwnedDib> expanded(const LockedDib& source);

}  // namespace vorel
