// Cutting packed DIBs in two.
#pragma once

#include "dib/packed_dib.h"
#include "frame/error.h"

namespace vorel::geometry {

// Receive the handles of the two parts. Each is written once its block is allocated, null on failure; when the operation
// fails later, they keep the handles of blocks that are freed again.
struct CutHandles {
  HGLOBAL *first, *second;
};

// Cuts a picture `line` rows below its top: the lower part becomes the first new DIB, the upper one the second. Every failure is
// unreported.
Result<bool> cut(const LockedDib& source, int32_t line, CutHandles parts);

}  // namespace vorel::geometry
