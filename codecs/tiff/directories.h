// The chain of directories in a TIFF file, one for each page.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tiff/bytes.h"

namespace codec {

// Page numbers have 16 bits in TIFF. A longer chain counts as endless.
inline constexpr size_t kMostPages = 65'535;

struct DirectoryChain {
  size_t pages = 0;
  bool ends = false;  // with a link of zero, not in a loop or an invalid link
};

// Follows the chain to its end or to `most` pages. Throws Failure if it is not a TIFF file.
DirectoryChain follow_directories(Bytes& bytes, size_t most = kMostPages);

}  // namespace codec
