// Portable maps, which scanning programs and page programs pass through pipes. A file holds one picture or several.
#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

#include "common/picture.h"
#include "core/file_formats.h"

namespace vorel::programs {

bool begins_as_pnm(std::istream& stream);

struct PnmFacts {
  DibHeader header;     // of the picture as it is loaded, without sizes
  std::string variant;  // in words
  uint32_t most = 1;    // the sample that stands for full light
};

// All read a stream of `bytes` bytes and throw Problem. Pages begin where find_pnm_pages() says, the first one at 0.
std::vector<uint64_t> find_pnm_pages(std::istream& stream, uint64_t bytes);
PnmFacts inspect_pnm(std::istream& stream, uint64_t bytes, uint64_t start);

// Black and white has 1 bit to a pixel, greys have 8, colours 24. Samples of more than 8 bits are rounded.
Picture read_pnm(std::istream& stream, uint64_t bytes, uint64_t start);

// The picture in the form that a format of the family holds. Throws Problem where there is none.
Picture suited_for_pnm(Picture picture, const FileFormat& format);

// Writes a suited picture: the first page replaces the file, others are added to it. False if not all could be written;
// a file that was added to is then as before.
bool write_pnm(const std::string& path, const Picture& picture, const FileFormat& format, int page);

}  // namespace vorel::programs
