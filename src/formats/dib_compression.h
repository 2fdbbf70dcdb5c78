// Run-length compression of packed DIBs.
#pragma once

#include "dib/packed_dib.h"
#include "frame/error.h"

namespace vorel::formats {

// Both assume a colour table of 1 << depth entries whatever the header counts, and copy it in full: pixels or codes follow
// it.

// A new DIB with the pixels of an uncompressed one of 8 or 4 bits as codes.
Result<OwnedDib> compressed(const LockedDib& source);

// A new uncompressed DIB with the decoded picture.
Result<OwnedDib> expanded(const LockedDib& source);

}  // namespace vorel::formats
