// Run-length compression of whatever comes: input to expand, and what it gives to compress and expand again.
//
// The input's first eight bytes are the compression, the depth, the width and the height (two bytes each), biSizeImage, and how
// many bytes the block lacks at its end; the rest lies behind a full colour table.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <vorel32.h>

namespace {

constexpr size_t kParameterBytes = 8;
constexpr uint64_t kMostBytes = 1 << 20;

using Bytes = std::vector<uint8_t>;

BITMAPINFOHEADER header_from(const uint8_t* parameters) {
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biCompression = parameters[0];
  header.biBitCount = parameters[1];
  header.biWidth = parameters[2] | parameters[3] << 8;
  header.biHeight = parameters[4] | parameters[5] << 8;
  header.biSizeImage = parameters[6];
  header.biPlanes = 1;
  return header;
}

uint64_t table_bytes(const BITMAPINFOHEADER& header) {
  return header.biBitCount < 29 ? uint64_t{4} << header.biBitCount : 0;
}

uint64_t picture_bytes(const BITMAPINFOHEADER& header) {
  const uint64_t stride = (uint64_t{header.biBitCount} * static_cast<uint32_t>(header.biWidth) + 31) / 32 * 4;
  return (stride + 2) * static_cast<uint32_t>(header.biHeight);
}

HGLOBAL block_of(const Bytes& bytes) {
  HGLOBAL block = GlobalAlloc(GHND, bytes.size());
  if (block == nullptr) std::abort();
  std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
  GlobalUnlock(block);
  return block;
}

bool are_equal(HGLOBAL a, HGLOBAL b) {
  const size_t size = GlobalSize(a);
  const bool equal = size == GlobalSize(b) && std::memcmp(GlobalLock(a), GlobalLock(b), size) == 0;
  GlobalUnlock(a);
  GlobalUnlock(b);
  return equal;
}

// What was expanded keeps its pixels, and its padding of zeros, for ever.
void check_round_trip(HGLOBAL picture) {
  HGLOBAL codes = CompressDIB(picture);
  HGLOBAL again = codes == nullptr ? nullptr : ExpandCompressedDIB(codes);
  if (again == nullptr || !are_equal(picture, again)) std::abort();
  GlobalFree(codes);
  GlobalFree(again);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < kParameterBytes) return 0;
  BITMAPINFOHEADER header = header_from(data);
  if (picture_bytes(header) > kMostBytes || table_bytes(header) > kMostBytes) return 0;
  Bytes bytes(sizeof header + static_cast<size_t>(table_bytes(header)));
  std::memcpy(bytes.data(), &header, sizeof header);
  bytes.insert(bytes.end(), data + kParameterBytes, data + size);
  bytes.resize(bytes.size() - std::min<size_t>(bytes.size() - 1, data[7]));

  HGLOBAL block = block_of(bytes);
  GlobalFree(CompressDIB(block));
  if (HGLOBAL picture = ExpandCompressedDIB(block)) {
    if (header.biCompression <= BI_RLE4) check_round_trip(picture);
    GlobalFree(picture);
  }
  GlobalFree(block);
  return 0;
}
