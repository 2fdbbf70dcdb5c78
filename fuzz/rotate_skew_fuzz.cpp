// Turning by any angle and skewing pictures whose headers may lie.
#include <cmath>

#include "calls.h"

namespace {

bool fits(uint64_t width, uint64_t height, int depth, uint64_t most) {
  return width < most && (width * static_cast<unsigned>(depth) + 31) / 8 * height <= most;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const int mode = input.byte();
  const int32_t number = input.number();
  const fuzz::Picture picture(input);
  const BITMAPINFOHEADER& header = picture.header();
  if (!picture.is_acceptable()) return 0;
  // The corners of negative sizes span a result, too.
  const auto width = static_cast<uint64_t>(std::abs(int64_t{header.biWidth})),
             height = static_cast<uint64_t>(std::abs(int64_t{header.biHeight}));
  std::array<int, 8> corners{};
  if (mode % 2 == 0) {
    const auto diagonal = static_cast<uint64_t>(std::hypot(width, height));
    if (!fits(diagonal, diagonal, header.biBitCount, input.most_bytes())) return 0;
    fuzz::make(picture, [&](HGLOBAL dib) {
      int status = 0;
      return RotateDIB(dib, number, mode / 2 % 2, &status, corners.data());
    });
    return 0;
  }
  const uint64_t offset = static_cast<uint64_t>(std::abs(int64_t{number}));
  const bool moves_rows = mode / 2 % 2 != 0;
  if (!fits(width + (moves_rows ? offset : 0), height + (moves_rows ? 0 : offset), header.biBitCount, input.most_bytes()))
    return 0;
  fuzz::make(picture, [&](HGLOBAL dib) {
    int error = 0;
    return SkewDIB(dib, moves_rows, number, &error, corners.data());
  });
  return 0;
}
