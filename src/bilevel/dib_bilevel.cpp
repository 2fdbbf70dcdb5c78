#include "bilevel/dib_bilevel.h"

#include <new>

#include "core/pixel.h"
#include "kernels/bilevel/plane_width.h"

namespace vorel {
namespace {

// A header for the source's picture at another depth, with all colours that the depth has.
DibHeader reduced_header(const DibHeader& source, int bits) {
  DibHeader header{.width = source.width,
                   .height = source.height,
                   .depth = static_cast<uint16_t>(bits),
                   .x_per_metre = source.x_per_metre,
                   .y_per_metre = source.y_per_metre,
                   .colors_used = implied_colors(static_cast<uint32_t>(bits))};
  header.image_bytes = static_cast<uint32_t>(rows_bytes(header).value());
  return header;
}

Result<OwnedDib> reduced(const DibHeader& header) {
  if (header.width < 0 || header.height < 0) return Error::kMemory;
  auto dib = OwnedDib::allocate(bits_offset(header) + rows_bytes(header));
  if (!dib) return Error::kMemory;
  write_header(dib->bytes(), header);
  kernels::write_dither_colors(header.depth,
                               {reinterpret_cast<Rgb*>(dib->bytes().data() + kHeaderBytes), header.colors_used});
  return dib;
}

std::span<const Rgb> table_of(const CompleteBytes& whole, uint32_t depth) {
  return colors_in(whole).first(implied_colors(depth));
}

}  // namespace

Result<OwnedDib> dithered(LockedDib& source, int bits, kernels::Dithering method) {
  const DibHeader& header = source.header();
  if (bits >= header.depth || !is_color_depth(header.depth)) {
    source.leave_locked();
    return Error::kDitherParameter;
  }
  const ByteCount offset = kHeaderBytes + ByteCount(implied_colors(header.depth)) * sizeof(Rgb);
  const auto whole = source.complete(offset + pixel_bytes(header));
  if (!whole) return Error::kMemory;
  // Scratch memory is no larger than a block, on any build.
  constexpr uint64_t kPlanes = 3, kErrorBytes = 3 * kPlanes * sizeof(int16_t);
  const ByteCount plane = kernels::plane_width(header.depth, std::max(header.width, 0));
  if (header.width < 0 || !(plane * kPlanes).fits_block()) return Error::kMemory;
  const bool is_empty = !has_pixels(header);

  const DibHeader result_header = reduced_header(header, bits);
  auto result = (plane * kErrorBytes).fits_block() ? reduced(result_header) : Error::kMemory;
  if (!result) {
    source.leave_locked();
    return result;
  }
  try {
    if (!is_empty)
      kernels::bilevel().dither(pixels_at(whole->bytes(), offset, header), table_of(*whole, header.depth),
                                pixels_at(result->bytes(), bits_offset(result_header), result_header), method);
  } catch (const std::bad_alloc&) {
    source.leave_locked();
    return Error::kMemory;
  }
  return result;
}

Result<OwnedDib> halftoned(LockedDib& source, kernels::HalftoneMethod method, int brightness) {
  const DibHeader& header = source.header();
  if (!is_color_depth(header.depth)) {
    source.leave_locked();
    return Error::kParameter;
  }
  const ByteCount offset = kHeaderBytes + palette_bytes(header),
                  table_end = kHeaderBytes + ByteCount(implied_colors(header.depth)) * sizeof(Rgb);
  const auto whole = source.complete(std::max(table_end, offset + pixel_bytes(header)));
  if (!whole) return Error::kMemory;
  const DibHeader result_header = reduced_header(header, 1);
  if (header.width < 0 || !(row_stride(header.depth, header.width) * 2 * sizeof(int32_t)).fits_block())
    return Error::kMemory;
  auto result = reduced(result_header);
  if (!result || !has_pixels(header)) return result;
  const auto memory = source.block().size() > whole->bytes().size() ? source.block() : whole->bytes();
  kernels::bilevel().halftone(pixels_at(whole->bytes(), offset, header), memory.subspan(static_cast<size_t>(offset.value())),
                              table_of(*whole, header.depth), brightness,
                              pixels_at(result->bytes(), bits_offset(result_header), result_header), method);
  return result;
}

}  // namespace vorel
