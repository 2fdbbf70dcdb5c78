// Run-length compression of whatever comes: input to expand, and what it gives to compress and expand again.
//
// The input's first eight bytes are the compression, the depth, the width and the height (two bytes each), biSizeImage, and how
// many bytes the block lacks at its end; the rest lies behind a full colour table.
#include <algorithm>
#include <cstdlib>

#include <vorel32.h>

#include "support/dib.h"

using namespace test;

namespace {

constexpr size_t kParameterBytes = 8;
constexpr uint64_t kMostBytes = 1 << 20;

BITMAPINFOHEADER header_from(const uint8_t* parameters) {
  BITMAPINFOHEADER header =
      header_for(parameters[2] | parameters[3] << 8, parameters[4] | parameters[5] << 8, parameters[1]);
  header.biCompression = parameters[0];
  header.biSizeImage = parameters[6];
  return header;
}

uint64_t table_bytes(const BITMAPINFOHEADER& header) {
  return header.biBitCount < 29 ? uint64_t{4} << header.biBitCount : 0;
}

uint64_t picture_bytes(const BITMAPINFOHEADER& header) {
  return (uint64_t{stride_of(header.biWidth, header.biBitCount)} + 2) * static_cast<uint32_t>(header.biHeight);
}

// What was expanded keeps its pixels, and its padding of zeros, for ever.
void check_round_trip(const Block& picture) {
  const Block codes(CompressDIB(picture.get())), again(ExpandCompressedDIB(codes.get()));
  if (!again || bytes_of(again.get()) != bytes_of(picture.get())) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < kParameterBytes) return 0;
  const BITMAPINFOHEADER header = header_from(data);
  if (picture_bytes(header) > kMostBytes || table_bytes(header) > kMostBytes) return 0;
  Bytes rest(static_cast<size_t>(table_bytes(header)));
  rest.insert(rest.end(), data + kParameterBytes, data + size);
  Bytes bytes = with_header(header, rest);
  bytes.resize(bytes.size() - std::min<size_t>(bytes.size() - 1, data[7]));

  const Block block = block_of(bytes);
  Block{CompressDIB(block.get())};
  const Block picture(ExpandCompressedDIB(block.get()));
  if (picture && header.biCompression <= BI_RLE4) check_round_trip(picture);
  return 0;
}
