// The chain of directories in a TIFF file, one for each page.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tiff/bytes.h"

namespace codec {

// Numbers of pages are 16 bits wide in TIFF. A longer chain is taken for an endless one.
inline constexpr size_t kMostPages = 65'535;

struct DirectoryChain {
  size_t pages = 0;
  bool ends = false;  // with a link of zero, not in a loop or in the middle of nowhere
};

// Follows the chain until it ends, or has `most` pages. Throws Failure for what is no TIFF file.
DirectoryChain follow_directories(Bytes& bytes, size_t most = kMostPages);

}  // namespace codec
