// Cutting packed DIBs in two.
#pragma once

#include "dib/packed_dib.h"

namespace vorel {

struct CutHandles {
  HGLOBAL *first, *second;
};

// Cuts a picture `line` rows below its top. The lower part goes to a new DIB in `first`, the upper one to `second`; both are set
// as soon as their blocks are there, or are not to be had, and keep the numbers of blocks that a failure has freed again.
bool cut(const LockedDib& source, int32_t line, CutHandles parts);

}  // namespace vorel
