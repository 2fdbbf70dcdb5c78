// TIFF pages into DIBs.
#pragma once

#include "tiff/bytes.h"

namespace codec {

// Returns a page, counted from 1. Throws Failure.
HGLOBAL read_tiff(Bytes& bytes, int page);

// The TIFF number of a page's compression.
int read_tiff_compression(Bytes& bytes, int page);

}  // namespace codec
