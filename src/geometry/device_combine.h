// Painting a picture onto another, through the system's raster operations.
#pragma once

#include "frame/error.h"
#include "platform/windows/gdi.h"

namespace vorel::geometry {

struct Place {
  int x, y;  // of the source's top left corner in the target
};

// Paints a bitmap onto another; a null target becomes a copy of the source.
//   no mask  the source replaces the covered pixels or, with the flag, is ORed to them
//   mask     where the mask is white, the source replaces the target or, with the flag, is XORed to it. The contents of source
//            and mask are lost
Result<bool> combine_bitmaps(Place at, HBITMAP* target, HBITMAP source, HBITMAP mask, bool flag);

// The same with DIBs, through device bitmaps. Source and mask are unchanged.
Result<bool> combine_dibs(Place at, HGLOBAL* target, HGLOBAL source, HGLOBAL mask, bool flag);

}  // namespace vorel::geometry
