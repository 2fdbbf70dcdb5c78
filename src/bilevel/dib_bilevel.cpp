#include "bilevel/dib_bilevel.h"

#include "core/pixel.h"
#include "dib/held_part.h"
#include "kernels/bilevel/plane_width.h"

namespace vorel::bilevel {
namespace {

// A header for the source's picture at another depth, with all colours of that depth.
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

Result<NewDib> reduced(const DibHeader& header) {
  if (header.width < 0 || header.height < 0) return Error::kMemory;
  NewDib dib = VOREL_TRY(NewDib::make(header, rows_bytes(header)).or_error(Error::kMemory));
  kernels::write_dither_colors(header.depth, dib.colors());
  return dib;
}

}  // namespace

Result<OwnedDib> dithered(LockedDib& source, int bits, kernels::Dithering method) {
  const DibHeader& header = source.header();
  if (bits >= header.depth || !is_color_depth(header.depth)) {
    source.leave_locked();
    return Error::kDitherParameter;
  }
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, {.rows_at = RowsAt::kBehindFullTable}));
  // A picture whose rows of samples fit no block is refused before anything is allocated.
  constexpr uint64_t kPlanes = 3;
  const ByteCount plane = kernels::plane_width(header.depth, std::max(header.width, 0));
  if (header.width < 0 || !(plane * kPlanes).fits_block()) return Error::kMemory;

  auto result = reduced(reduced_header(header, bits));
  const auto scratch = ZeroedBuffer::allocate(kernels::dithering_scratch({header.width, header.height}, bits, method));
  if (!result || !scratch) {
    source.leave_locked();
    return Error::kMemory;
  }
  if (has_pixels(header))
    kernels::bilevel().dither(opened.held_rows(), opened.colors(implied_colors(header.depth)), result->pixels(), method,
                              scratch->bytes());
  return OwnedDib(std::move(*result));
}

Result<OwnedDib> halftoned(LockedDib& source, kernels::HalftoneMethod method, int brightness) {
  const DibHeader& header = source.header();
  if (!is_color_depth(header.depth)) {
    source.leave_locked();
    return Error::kParameter;
  }
  const uint32_t colors = implied_colors(header.depth);
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, {.rows_at = RowsAt::kBehindTable, .least_colors = colors}));
  if (header.width < 0) return Error::kMemory;
  const auto scratch = VOREL_TRY(
      or_error(ZeroedBuffer::allocate(kernels::halftone_scratch({header.width, header.height}, method)), Error::kMemory));
  NewDib result = VOREL_TRY(reduced(reduced_header(header, 1)));
  if (!has_pixels(header)) return OwnedDib(std::move(result));
  const auto fill = [&](DibView rows) {
    kernels::bilevel().halftone(opened.pixels(), opened.rows_and_rest(), opened.colors(colors), brightness, rows, method,
                                scratch.bytes());
  };
  if (method == kernels::HalftoneMethod::kDiffusion)
    fill(result.pixels());
  else
    fill_rows_from_held(opened, result.pixels(), kernels::kHalftonePeriod, fill);
  return OwnedDib(std::move(result));
}

}  // namespace vorel::bilevel
