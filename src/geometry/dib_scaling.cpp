#include "geometry/dib_scaling.h"

#include <limits>

#include "core/pixel.h"
#include "dib/open_dib.h"

namespace vorel::geometry {
namespace {

constexpr int kMostPixels = std::numeric_limits<uint16_t>::max();  // longest side of interpolated sources and results

// The number of colours that pixels can select.
uint32_t color_count(const DibHeader& header) { return std::min(DIBNumColors(header), implied_colors(header.depth)); }

// Scales the first rows and columns of a picture, as many as `area` says and the picture has. The result has its rows behind
// 40 bytes and the table, the source behind the stated size of its header.
Result<OwnedDib> interpolated(const LockedDib& source, Size area, Size size, kernels::Interpolate* scale,
                              kernels::Interpolation interpolation) {
  const DibHeader& header = source.header();
  DibHeader result_header = header;
  result_header.width = size.width;
  result_header.height = size.height;
  result_header.image_bytes = static_cast<uint32_t>(rows_bytes(result_header).value());

  const LayoutRule result_rule = {.rows_at = RowsAt::kBehindTable};
  const uint32_t head_colors = static_cast<uint32_t>((palette_bytes(header).value() + sizeof(Rgb) - 1) / sizeof(Rgb));
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, {.least_colors = std::max(color_count(header), head_colors)}));
  const auto allocate = header.depth == 4 ? OwnedDib::allocate : OwnedDib::allocate_unset;  // half a byte may be padding
  NewDib result = VOREL_TRY(NewDib::with_room_of(header, result_rule, result_header, allocate).or_error(Error::kMemory));
  const auto scratch =
      VOREL_TRY(or_error(ZeroedBuffer::allocate(kernels::interpolation_scratch(area, size)), Error::kMemory));
  std::ranges::copy(opened.bytes().first(result.head().size()), result.head().begin());
  write_header(result.bytes(), result_header);
  // Rows behind the block's end are zero: one stands for all.
  const int rows = std::min(area.height, opened.held_rows().height() + 1);
  scale(opened.pixels().with_width(area.width).first_rows(rows), area.height, opened.colors(color_count(header)),
        result.pixels(), interpolation, scratch.bytes());
  result.clear_padding();
  return OwnedDib(std::move(result));
}

}  // namespace

Result<OwnedDib> scaled(const LockedDib& source, kernels::Interpolation interpolation, uint32_t width, uint32_t height) {
  const DibHeader& header = source.header();
  if (header.depth == 1)
    return ScaleDIBRect(source, {0, 0, header.width, header.height}, {static_cast<int>(width), static_cast<int>(height)});
  if (!is_color_depth(header.depth)) return Error::kHeaderBits;
  const Size size = {static_cast<uint16_t>(width), static_cast<uint16_t>(height)};
  if (size.width == 0 || size.height == 0) return Error::kDibSize;
  if (header.width < 1 || header.height < 1 || header.width > kMostPixels) return Error::kDibSize;
  return interpolated(source, {header.width, header.height}, size, kernels::scale().scale_colors, interpolation);
}

Result<OwnedDib> magnified(const LockedDib& source, Size area, int x_factor, int y_factor,
                           kernels::Interpolation interpolation) {
  const DibHeader& header = source.header();
  if (!is_color_depth(header.depth)) return Error::kHeaderBits;
  if (area.width < 1 || area.height < 1 || area.width > header.width || area.height > header.height)
    return Error::kParameter;
  if (x_factor < 1 || y_factor < 1) return Error::kParameter;
  const int64_t width = int64_t{area.width} * x_factor, height = int64_t{area.height} * y_factor;
  if (width > kMostPixels || height > kMostPixels) return Error::kDibSize;
  return interpolated(source, area, {static_cast<int>(width), static_cast<int>(height)}, kernels::scale().scale_levels,
                      interpolation);
}

Result<OwnedDib> ScaleDIBRect(const LockedDib& source, Rect rect, Size size) {
  constexpr uint32_t kSpareBytes = 16;
  const DibHeader& header = source.header();
  if (rect.width < 1 || rect.height < 1 || size.width < 1 || size.height < 1) return Error::kUnreported;
  if (rect.x < 0 || rect.y < 0 || rect.x >= header.width || rect.y >= header.height) return Error::kUnreported;
  DibHeader result_header = header;
  result_header.width = size.width;
  result_header.height = size.height;

  // The result has a table of four-byte colours whatever the header's size, with the header's count even where it is ignored
  // elsewhere.
  const bool counts_colors = header.size != kCoreHeaderBytes && header.colors_used != 0;
  const ByteCount head = kHeaderBytes + ByteCount(counts_colors ? header.colors_used : DIBNumColors(header)) * sizeof(Rgb);
  const auto whole =
      VOREL_TRY(or_error(source.complete(std::max(head, bits_offset(header) + rows_bytes(header))), Error::kUnreported));
  const ByteCount image = rows_bytes(result_header) + row_stride(header.depth, size.width) + kSpareBytes;
  OwnedDib result =
      VOREL_TRY(OwnedDib::with_head(whole.bytes().first(static_cast<size_t>(head.value())), result_header, image)
                    .or_error(Error::kUnreported));
  const auto scratch = ZeroedBuffer::allocate(kernels::nearest_scratch(header.depth, size));
  kernels::scale().scale_nearest(pixels_at(whole.bytes(), bits_offset(header), header), rect,
                                 pixels_at(result.bytes(), head, result_header),
                                 scratch ? scratch->bytes() : std::span<uint8_t>());
  return result;
}

}  // namespace vorel::geometry
