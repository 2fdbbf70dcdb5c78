#include "tone/levels.h"

#include <algorithm>

#include "core/gray.h"
#include "dib/held_part.h"
#include "kernels/tone/tone.h"

namespace vorel::tone {
namespace {

DibHeader true_color_header(DibHeader header) {
  header.planes = 1;
  header.depth = 24;
  header.colors_used = header.colors_important = 0;
  // A quirk that is kept: the stated size is computed from the low 16 bits of a row's length. All rows are present.
  const auto short_stride = static_cast<uint16_t>(row_stride(24, header.width).value());
  header.image_bytes = uint32_t{short_stride} * static_cast<uint32_t>(header.height);
  return header;
}

// A copy with the table mapped and the rest unchanged, of the size that the header states.
Result<OwnedDib> with_mapped_table(const OpenDib& source, const kernels::ComponentTable& table) {
  const DibHeader& header = source.header();
  const ByteCount image_bytes = stated_image_bytes(header);
  const auto rows = source.rows_and_rest();
  const bool is_overwritten = ByteCount(rows.size()) >= image_bytes;
  NewDib result = VOREL_TRY(NewDib::make(header, image_bytes, {},
                                         is_overwritten ? OwnedDib::allocate_unset_or_retry : OwnedDib::allocate_or_retry));
  std::ranges::transform(source.colors(DIBNumColors(header)), result.colors().begin(), [&](Rgb color) {
    return Rgb{table[color.blue], table[color.green], table[color.red], color.reserved};
  });
  const auto image = result.image().first(static_cast<size_t>(image_bytes.value()));
  std::ranges::copy(rows.first(std::min(rows.size(), image.size())), image.begin());
  return OwnedDib(std::move(result));
}

}  // namespace

Result<HGLOBAL> with_levels(HGLOBAL handle, const LockedDib& source, const kernels::ComponentTable& table, Where where) {
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kReadsFullTable));
  Target target = VOREL_TRY(Target::of(handle, opened, where, OwnedDib::allocate_unset_or_retry));
  kernels::ComponentTable levels;
  std::ranges::transform(opened.colors(kTableColors), levels.begin(), [&](Rgb color) { return table[level_of(color)]; });
  target.write_gray_ramp();
  fill_from_held(opened, target.pixels(), 0,
                 [&](ConstDibView from, DibView to) { kernels::tone().map_bytes(from, to, levels); });
  return std::move(target).release();
}

Result<OwnedDib> with_components(const LockedDib& source, const kernels::ComponentTable& table) {
  const OpenDib opened = VOREL_TRY(OpenDib::open(source));
  if (opened.header().depth != 24) return with_mapped_table(opened, table);
  StatedCopy result = VOREL_TRY(StatedCopy::of(opened, OwnedDib::allocate_unset_or_retry));
  std::ranges::copy(opened.head(), result.head().begin());
  fill_from_held(opened, result.pixels(), 0,
                 [&](ConstDibView from, DibView to) { kernels::tone().map_bytes(from, to, table); });
  return std::move(result).finish();
}

Result<OwnedDib> in_true_color(const LockedDib& source) {
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kReadsFullTable));
  const DibHeader header = true_color_header(opened.header());
  NewDib result = VOREL_TRY(NewDib::make(header, rows_bytes(header), {}, OwnedDib::allocate_unset_or_retry));
  result.clear_padding();
  const auto colors = opened.colors(kTableColors).first<kTableColors>();
  fill_from_held(opened, result.pixels(), 0,
                 [&](ConstDibView from, DibView to) { kernels::tone().look_up_colors(from, to, colors); });
  return OwnedDib(std::move(result));
}

}  // namespace vorel::tone
