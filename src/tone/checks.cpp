#include "tone/checks.h"

#include <algorithm>

namespace vorel::tone {

Error refusal(const DibHeader& header, std::initializer_list<uint16_t> depths, SizeBits width_bits, SizeBits height_bits) {
  const auto is_zero = [](int32_t size, SizeBits bits) {
    return (bits == SizeBits::kAll ? size : static_cast<uint16_t>(size)) == 0;
  };
  if (header.size != kHeaderBytes) return Error::kParameter;
  if (header.compression != Compression::kNone) return Error::kCompressed;
  if (std::ranges::find(depths, header.depth) == depths.end()) return Error::kPixelBits;
  if (is_zero(header.width, width_bits) || is_zero(header.height, height_bits)) return Error::kDibSize;
  return Error::kNone;
}

}  // namespace vorel::tone
