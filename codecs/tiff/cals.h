// CALS raster files, type 1: a text header, then one picture as Group 4 data.
#pragma once

#include <cstdint>
#include <vector>

#include "common/dib.h"

namespace codec {

// The header: records of 128 characters each.
inline constexpr size_t kCalsHeaderBytes = 2048;
inline constexpr size_t kCalsRecordBytes = 128;

// Throw Failure.
HGLOBAL read_cals(std::vector<uint8_t> file);
std::vector<uint8_t> cals_file(const SourceDib& dib);

}  // namespace codec
