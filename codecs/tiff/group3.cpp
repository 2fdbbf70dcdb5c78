#include "tiff/group3.h"

#include <algorithm>
#include <limits>

namespace codec {
namespace {

// Adds the mark, a 1 bit, behind each end-of-line code: eleven zeros or more and a 1.
std::vector<uint8_t> with_row_marks(std::span<const uint8_t> data) {
  constexpr int kZeros = 11;
  std::vector<uint8_t> marked;
  marked.reserve(data.size() + data.size() / 8);
  unsigned bits = 0, count = 0;
  const auto put = [&](unsigned bit) {
    bits = bits << 1 | bit;
    if (++count % 8 == 0) marked.push_back(static_cast<uint8_t>(bits));
  };
  int zeros = 0;
  for (const uint8_t byte : data)
    for (int shift = 7; shift >= 0; --shift) {
      const unsigned bit = byte >> shift & 1;
      put(bit);
      if (bit != 0 && zeros >= kZeros) put(1);
      zeros = bit != 0 ? 0 : zeros + 1;
    }
  while (count % 8 != 0) put(0);
  return marked;
}

std::vector<uint8_t> raw_data(const TiffHandle& tiff, uint32_t index) {
  const uint64_t bytes = TIFFGetStrileByteCount(tiff.get(), index);
  if (bytes > TIFFGetSizeProc(tiff.get())(TIFFClientdata(tiff.get()))) fail(IMG_E_FORMAT);
  std::vector<uint8_t> data(static_cast<size_t>(bytes));
  const auto size = static_cast<tmsize_t>(bytes);
  const auto read = TIFFIsTiled(tiff.get()) != 0 ? TIFFReadRawTile : TIFFReadRawStrip;
  if (read(tiff.get(), index, data.data(), size) != size) fail(IMG_E_FORMAT);
  if (tiff.tag<uint16_t>(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) == FILLORDER_LSB2MSB) TIFFReverseBits(data.data(), size);
  return data;
}

}  // namespace

bool has_too_many_runs(std::span<const uint8_t> row, int width) {
  return width % 32 == 0 && std::ranges::all_of(row, [](uint8_t byte) { return byte == 0xAA; });
}

bool is_one_dimensional_group3(const TiffHandle& tiff) {
  return tiff.tag<uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE) == COMPRESSION_CCITTFAX3 &&
         (tiff.tag<uint32_t>(TIFFTAG_GROUP3OPTIONS, 0) & GROUP3OPT_2DENCODING) == 0 &&
         tiff.tag<uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1) == 1;
}

void make_two_dimensional(const TiffHandle& tiff, Bytes& copy) {
  const TiffHandle target(copy, "w");
  const auto set = [&](uint32_t tag, uint32_t value) {
    target.run([&] { return TIFFSetField(target.get(), tag, value) != 0; });
  };
  const bool has_tiles = TIFFIsTiled(tiff.get()) != 0;
  for (const uint32_t tag : {TIFFTAG_IMAGEWIDTH, TIFFTAG_IMAGELENGTH}) set(tag, tiff.tag<uint32_t>(tag, 0));
  set(TIFFTAG_BITSPERSAMPLE, 1);
  set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  set(TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX3);
  set(TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
  if (has_tiles) {
    for (const uint32_t tag : {TIFFTAG_TILEWIDTH, TIFFTAG_TILELENGTH}) set(tag, tiff.tag<uint32_t>(tag, 0));
  } else {
    set(TIFFTAG_ROWSPERSTRIP, tiff.tag<uint32_t>(TIFFTAG_ROWSPERSTRIP, std::numeric_limits<uint32_t>::max()));
  }
  const auto write = has_tiles ? TIFFWriteRawTile : TIFFWriteRawStrip;
  const uint32_t count = has_tiles ? TIFFNumberOfTiles(tiff.get()) : TIFFNumberOfStrips(tiff.get());
  for (uint32_t i = 0; i < count; ++i) {
    std::vector<uint8_t> data = with_row_marks(raw_data(tiff, i));
    const auto size = static_cast<tmsize_t>(data.size());
    target.check(write(target.get(), i, data.data(), size) == size);
  }
  target.run([&] { return TIFFWriteDirectory(target.get()) != 0; });
}

}  // namespace codec
