// DIBs into TIFF pages.
#pragma once

#include "common/dib.h"
#include "tiff/handle.h"

namespace codec {

// The encoding of a picture in a page.
struct Encoding {
  uint16_t compression = COMPRESSION_NONE;
  uint16_t photometric = PHOTOMETRIC_MINISWHITE;
  uint16_t predictor = PREDICTOR_NONE;
  bool is_complemented = false;  // bits, for the opposite photometric interpretation
  bool has_long_rows = false;    // see group3.h
};

// `compression` is the TIFF number, or 0 for the default. Throws Failure if it does not suit the picture.
Encoding encoding_for(const SourceDib& dib, int compression);

// The Group 4 data of a 1-bit picture. `white_bit` is the bit of its white pixels.
std::vector<uint8_t> group4_data(const SourceDib& dib, bool white_bit);

// Does not write the directory. Throws Failure.
void write_picture(const TiffHandle& tiff, const SourceDib& dib, const Encoding& encoding);

// Makes a file of one page, or adds a page to an existing file, which is unchanged on failure. Throws Failure.
void save_tiff(const char* path, const SourceDib& dib, int compression, bool adds_page);

}  // namespace codec
