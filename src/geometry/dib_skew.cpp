#include "geometry/dib_skew.h"

#include <array>
#include <limits>

#include "core/pixel.h"
#include "dib/open_dib.h"
#include "kernels/turn/turn.h"

namespace vorel::geometry {
namespace {

Error check(const DibHeader& header) {
  if (header.size != kHeaderBytes) return Error::kParameter;
  if (header.compression != Compression::kNone) return Error::kCompressed;
  if (header.width == 0 || header.height == 0) return Error::kDibSize;
  return Error::kNone;
}

// Clockwise from the top left corner, y downwards from the result's top line. Sums wrap at 32 bits.
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
    // A quirk that is kept: the whole lower edge moves, so the corners are those of the grown rectangle.
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
  result_header.image_bytes = static_cast<uint32_t>(Layout::of(result_header).rows.value());

  const OpenDib opened = VOREL_TRY(OpenDib::open(source));
  const bool is_overwritten = is_pixel_depth(header.depth) && has_pixels(header);
  NewDib result =
      VOREL_TRY(NewDib::like(opened, result_header, is_overwritten ? OwnedDib::allocate_unset : OwnedDib::allocate));
  result.clear_padding();
  const auto kernel = direction == SkewDirection::kRows ? kernels::turn().skew_rows : kernels::turn().skew_columns;
  kernel(opened.pixels(), result.pixels(), offset);
  return OwnedDib(std::move(result));
}

}  // namespace vorel::geometry
