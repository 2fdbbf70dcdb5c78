#include "geometry/dib_skew.h"

#include <array>
#include <limits>

#include "kernels/turn/turn.h"

namespace vorel {
namespace {

Error check(const DibHeader& header) {
  if (header.size != kHeaderBytes) return Error::kParameter;
  if (header.compression != Compression::kNone) return Error::kCompressed;
  if (header.width == 0 || header.height == 0) return Error::kDibSize;
  return Error::kNone;
}

// Points as callers get them: from the top left corner of the result, clockwise, y downwards. Sums that leave 32 bits wrap.
std::array<int32_t, 8> corners_of(const DibHeader& header, SkewDirection direction, int32_t offset) {
  const auto sum = [](int32_t a, int64_t b) { return static_cast<int32_t>(a + b); };
  const int32_t width = header.width, height = header.height, negated = sum(0, -int64_t{offset});
  std::array<int32_t, 8> corners = {0, 0, width, 0, width, height, 0, height};
  auto& [x0, y0, x1, y1, x2, y2, x3, y3] = corners;
  if (direction == SkewDirection::kRows) {
    if (offset > 0)
      x0 = offset, x1 = sum(width, offset);
    else
      x3 = negated, x2 = sum(width, negated);
  } else if (offset > 0) {
    y0 = y1 = offset;
  } else {
    // The lower edge as a whole: the corners tell the rectangle that the picture has grown to.
    y2 = y3 = sum(height, negated);
  }
  return corners;
}

}  // namespace

Result<OwnedDib> skewed(const LockedDib& source, SkewDirection direction, int32_t offset, int32_t* corners) {
  const DibHeader& header = source.header();
  if (const Error refusal = check(header); refusal != Error::kNone) return refusal;
  if (corners != nullptr) std::ranges::copy(corners_of(header, direction, offset), corners);

  DibHeader result_header = header;
  int32_t& grown = direction == SkewDirection::kRows ? result_header.width : result_header.height;
  const int64_t size = grown + std::abs(int64_t{offset});
  if (size > std::numeric_limits<int32_t>::max()) return Error::kMemory;
  grown = static_cast<int32_t>(size);
  if (result_header.width < 0 || result_header.height < 0) return Error::kMemory;
  const ByteCount image = rows_bytes(result_header);
  result_header.image_bytes = static_cast<uint32_t>(image.value());

  const auto whole = source.complete(bits_offset(header) + pixel_bytes(header));
  if (!whole) return Error::kMemory;
  auto result =
      OwnedDib::with_head(whole->bytes().first(static_cast<size_t>(bits_offset(header).value())), result_header, image);
  if (!result || !has_pixels(header)) return result;

  const auto kernel = direction == SkewDirection::kRows ? kernels::turn().skew_rows : kernels::turn().skew_columns;
  kernel(pixels_at(whole->bytes(), bits_offset(header), header),
         pixels_at(result->bytes(), bits_offset(header), result_header), offset);
  return result;
}

}  // namespace vorel
