#include "tone/grays.h"

#include <algorithm>
#include <utility>

#include "core/gray.h"
#include "dib/held_part.h"
#include "tone/full_table.h"

namespace vorel::tone {
namespace {

// Smoothing over five rows needs six of them.
kernels::Smoothing smoothing_for(int grade, int32_t height) {
  if (grade == 2 && height < 4) return kernels::Smoothing::kNone;
  if (grade == 2 && height < 6) return kernels::Smoothing::kBy3;
  return static_cast<kernels::Smoothing>(grade);
}

// A result with its image size filled in and its pixels unset. Results made from 1 and 24 bits have spare bytes behind their rows.
Result<NewDib> new_picture(DibHeader header, uint32_t source_depth) {
  const ByteCount rows = rows_bytes(header);
  header.image_bytes = static_cast<uint32_t>(rows.value());
  const bool has_spare = source_depth == 1 || source_depth == 24;
  const ByteCount spare = has_spare ? (ByteCount(static_cast<uint32_t>(header.width)) * 40 + 155).value() / 32 * 4 : 0;
  NewDib dib = VOREL_TRY(NewDib::make(header, rows + spare, {}, OwnedDib::allocate_unset));
  dib.clear_padding();
  return dib;
}

Result<OwnedDib> expanded(const OpenDib& source, NewDib result, int grade, bool inverted) {
  const kernels::Smoothing smoothing = smoothing_for(grade, source.header().height);
  const size_t scratch_bytes = kernels::expansion_scratch_bytes(smoothing, source.header().width);
  const ZeroedBuffer scratch = VOREL_TRY(or_error(ZeroedBuffer::allocate(scratch_bytes), Error::kMemory));
  const int reach = 2 * static_cast<int>(smoothing);  // rows are delayed by the spread
  fill_from_held(source, result.pixels(), reach, [&](ConstDibView from, DibView to) {
    kernels::tone().expand_bits(from, to, smoothing, inverted, scratch.bytes());
  });
  return OwnedDib(std::move(result));
}

Rgb gray_of(Rgb color, kernels::GrayRule rule) {
  const uint8_t gray = rule == kernels::GrayRule::kMean ? mean_of(color) : weighted_gray_of(color);
  return {gray, gray, gray, 0};
}

// The same pixels with grey colours.
void make_table_gray(const OpenDib& source, NewDib& result, kernels::GrayRule rule) {
  const std::span<Rgb> colors = result.colors();
  const size_t count = std::min<size_t>(DIBNumColors(source.header()), colors.size());
  std::ranges::transform(source.colors(count), colors.begin(), [&](Rgb color) { return gray_of(color, rule); });
  std::ranges::copy(source.rows(), result.rows().begin());
}

}  // namespace

Result<OwnedDib> in_grays(const LockedDib& source, int grade, kernels::GrayRule rule) {
  DibHeader header = source.header();
  const uint16_t depth = header.depth;
  if (depth == 1 && (grade < 0 || grade > 2)) return Error::kParameter;
  if (!has_pixels(header)) return Error::kMemory;
  header.depth = depth == 4 ? 4 : 8;
  header.colors_used = implied_colors(header.depth);

  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kReadsFullTable));
  NewDib result = VOREL_TRY(new_picture(header, depth));
  if (depth == 4 || depth == 8) {
    make_table_gray(opened, result, rule);
    return OwnedDib(std::move(result));
  }
  write_gray_ramp(result.colors());
  if (depth == 1) return expanded(opened, std::move(result), grade, false);
  fill_from_held(opened, result.pixels(), 0,
                 [&](ConstDibView from, DibView to) { kernels::tone().gray_rows(from, to, rule); });
  return OwnedDib(std::move(result));
}

Result<OwnedDib> in_inverted_ramp(const LockedDib& source, int grade) {
  const DibHeader& header = source.header();
  if (!has_pixels(header)) return Error::kMemory;
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kReadsFullTable));
  NewDib result = VOREL_TRY(new_picture({.width = header.width,
                                         .height = header.height,
                                         .depth = 8,
                                         .x_per_metre = header.x_per_metre,
                                         .y_per_metre = header.y_per_metre},
                                        header.depth));
  write_inverted_gray_ramp(result.colors());

  const auto lightness = [](Rgb color) { return color.blue * color.green * color.red; };
  const auto colors = opened.colors(2);
  const bool inverted = lightness(colors[0]) < lightness(colors[1]);
  return expanded(opened, std::move(result), grade, inverted);
}

}  // namespace vorel::tone
