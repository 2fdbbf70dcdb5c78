#include "common/dib.h"

#include <algorithm>

namespace vorel {

Dib with_whole_table(const Dib& dib) {
  const DibLock lock(dib);
  BITMAPINFOHEADER header = lock.header();
  const size_t colors = size_t{1} << header.biBitCount;
  const std::span<const uint8_t> table = lock.bytes().subspan(sizeof header, std::min<size_t>(header.biClrUsed, colors) * 4);
  const std::span<const uint8_t> pixels = lock.pixels();
  header.biClrUsed = static_cast<uint32_t>(colors);
  Dib whole(GlobalAlloc(GHND, sizeof header + colors * 4 + pixels.size()));
  if (!whole) throw std::bad_alloc();
  const DibLock target(whole);
  std::memcpy(target.bytes().data(), &header, sizeof header);
  std::ranges::copy(table, target.bytes().begin() + sizeof header);
  std::ranges::copy(pixels, target.bytes().begin() + static_cast<std::ptrdiff_t>(sizeof header + colors * 4));
  return whole;
}

}  // namespace vorel
