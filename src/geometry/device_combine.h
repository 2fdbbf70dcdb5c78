// Painting pictures onto others, through the system's raster operations.
#pragma once

#include "frame/error.h"
#include "platform/windows/gdi.h"

namespace vorel {

struct Place {
  int x, y;  // of the source's left upper corner in the target
};

// Paints a bitmap onto another; without one there, `target` becomes a copy of the source.
//   no mask  the source replaces what it covers, or, with the flag, is ORed to it
//   mask     white lets the source through, which replaces what is there or, with the flag, is XORed to it. Source and mask lose
//            their contents
Result<bool> combine_bitmaps(Place at, HBITMAP* target, HBITMAP source, HBITMAP mask, bool flag);

// The same with DIBs, by way of device bitmaps. Source and mask stay as they are.
Result<bool> combine_dibs(Place at, HGLOBAL* target, HGLOBAL source, HGLOBAL mask, bool flag);

}  // namespace vorel
