#include "tone/dib_tone.h"

#include <algorithm>
#include <cstring>

#include "core/gray.h"

namespace vorel {
namespace {

constexpr size_t kTableColors = 256;

size_t to_size(ByteCount bytes) { return static_cast<size_t>(bytes.value()); }

// A source that is whole: as many bytes as its rows and 256 colours need, whatever of these are rows.
std::optional<CompleteBytes> whole_of(const LockedDib& source) {
  const DibHeader& header = source.header();
  return source.complete(
      std::max(bits_offset(header) + pixel_bytes(header), kHeaderBytes + ByteCount(kTableColors) * sizeof(Rgb)));
}

std::span<Rgb> table_of(std::span<uint8_t> dib, size_t colors) {
  return {reinterpret_cast<Rgb*>(dib.data() + kHeaderBytes), colors};
}

// The colours of a table that pixels of 8 bits can name and that exist, so that rows behind a shorter table stay as they are.
std::span<Rgb> writable_table(std::span<uint8_t> dib, const DibHeader& header) {
  return table_of(dib, std::min<size_t>(DIBNumColors(header), kTableColors));
}

// The block that a change goes to. A copy has header, colour table and the image size that the header states; of the rest just
// the header is copied.
Result<Written> target_of(HGLOBAL handle, const LockedDib& source, const CompleteBytes& whole, Where where, bool retries) {
  const DibHeader& header = source.header();
  const ByteCount needed = bits_offset(header) + pixel_bytes(header);
  if (where == Where::kInPlace) {
    auto bytes = source.complete(std::max(needed, ByteCount(whole.bytes().size())));
    if (!bytes) return Error::kMemory;
    return std::move(*Written::in_place(handle, std::move(*bytes)));
  }
  const ByteCount size = bits_offset(header) + stated_image_bytes(header);
  auto copy = retries ? OwnedDib::allocate_or_retry(size) : OwnedDib::allocate(size);
  if (!copy) return copy.error();
  auto written = Written::as_copy(std::move(*copy), needed);
  if (!written) return Error::kMemory;
  std::ranges::copy(whole.bytes().first(kHeaderBytes), written->bytes().begin());
  return std::move(*written);
}

template <class Byte>
BasicView<Byte> pixels_of(std::span<Byte> dib, const DibHeader& header) {
  return pixels_at(dib, bits_offset(header), header);
}

}  // namespace

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

Result<HGLOBAL> with_levels(HGLOBAL handle, const LockedDib& source, const kernels::ComponentTable& table, Where where) {
  const DibHeader& header = source.header();
  const auto whole = whole_of(source);
  if (!whole) return Error::kMemory;
  auto target = target_of(handle, source, *whole, where, true);
  if (!target) return target.error();

  kernels::ComponentTable levels;
  std::ranges::transform(table_of(whole->bytes(), kTableColors), levels.begin(),
                         [&](Rgb color) { return table[level_of(color)]; });
  write_gray_ramp(writable_table(target->bytes(), header));
  const auto from = pixels_of(whole->bytes(), header);
  const auto to = pixels_of(target->bytes(), header);
  if (has_pixels(header)) kernels::tone().map_bytes(from, to, levels);
  return target->release();
}

Result<OwnedDib> with_components(const LockedDib& source, const kernels::ComponentTable& table) {
  const DibHeader& header = source.header();
  const auto stated = stated_image_bytes(header);
  const auto whole = source.complete(bits_offset(header) + std::max(stated, pixel_bytes(header)));
  if (!whole) return Error::kMemory;
  const size_t head = to_size(bits_offset(header));
  auto result = OwnedDib::with_head(whole->bytes().first(head), header, stated, OwnedDib::allocate_or_retry);
  if (!result) return result;

  if (header.depth != 24) {
    for (Rgb& color : table_of(result->bytes(), DIBNumColors(header)))
      color = {table[color.blue], table[color.green], table[color.red], color.reserved};
    std::ranges::copy(whole->bytes().subspan(head, to_size(stated)),
                      result->bytes().begin() + static_cast<std::ptrdiff_t>(head));
    return result;
  }
  const auto to = CompleteBytes::of(result->bytes(), bits_offset(header) + pixel_bytes(header));
  if (!to) return Error::kMemory;
  const auto from = pixels_of(whole->bytes(), header);
  const auto rows = pixels_of(to->bytes(), header);
  if (has_pixels(header)) kernels::tone().map_bytes(from, rows, table);
  to->write_back();
  return result;
}

Result<OwnedDib> in_true_color(const LockedDib& source) {
  const DibHeader& header = source.header();
  DibHeader result_header = header;
  result_header.planes = 1;
  result_header.depth = 24;
  result_header.colors_used = result_header.colors_important = 0;
  // The stated size counts rows by their low 16 bits. All of them are there.
  const auto short_stride = static_cast<uint16_t>(row_stride(24, header.width).value());
  result_header.image_bytes = uint32_t{short_stride} * static_cast<uint32_t>(header.height);

  const auto whole = whole_of(source);
  if (!whole) return Error::kMemory;
  auto result = OwnedDib::with_head(whole->bytes().first(kHeaderBytes), result_header, rows_bytes(result_header),
                                    OwnedDib::allocate_or_retry);
  if (!result) return result;
  const auto colors = table_of(whole->bytes(), kTableColors).first<kTableColors>();
  if (has_pixels(header))
    kernels::tone().look_up_colors(pixels_of(whole->bytes(), header), pixels_of(result->bytes(), result_header), colors);
  return result;
}

// ---- Filters ----

Result<HGLOBAL> filtered_gray(HGLOBAL handle, const LockedDib& source, const kernels::Kernel& kernel, Where where) {
  const DibHeader& header = source.header();
  const auto whole = whole_of(source);
  if (!whole) return Error::kMemory;
  auto target = target_of(handle, source, *whole, where, false);
  if (!target) return target.error();
  write_gray_ramp(writable_table(target->bytes(), header));
  const auto from = pixels_of(whole->bytes(), header);
  const auto to = pixels_of(target->bytes(), header);
  if (has_pixels(header)) kernels::filter().convolve_gray(from, to, kernel);
  return target->release();
}

Result<HGLOBAL> filtered_color(HGLOBAL handle, const LockedDib& source, const kernels::Kernel& kernel,
                               kernels::Intensity intensity, Where where) {
  const DibHeader& header = source.header();
  const auto whole = whole_of(source);
  if (!whole) return Error::kMemory;
  auto target = target_of(handle, source, *whole, where, true);
  if (!target) return target.error();
  // A table, which 24 bits have no use for, goes along.
  const auto table = whole->bytes().subspan(kHeaderBytes, to_size(palette_bytes(header)));
  std::ranges::copy(table, target->bytes().begin() + kHeaderBytes);

  const auto from = pixels_of(whole->bytes(), header);
  const auto to = pixels_of(target->bytes(), header);
  if (has_pixels(header)) kernels::filter().convolve_color(from, to, kernel, intensity);
  return target->release();
}

// ---- Greys ----

namespace {

// kernels::Smoothing over five rows takes six.
kernels::Smoothing smoothing_for(int grade, int32_t height) {
  if (grade == 2 && height < 4) return kernels::Smoothing::kNone;
  if (grade == 2 && height < 6) return kernels::Smoothing::kBy3;
  return static_cast<kernels::Smoothing>(grade);
}

// Bytes behind the pixels of blocks whose rows are smoothed or made of colours.
ByteCount slack_bytes(const DibHeader& header) {
  return (ByteCount(static_cast<uint32_t>(header.width)) * 40 + 155).value() / 32 * 4;
}

}  // namespace

Result<OwnedDib> in_grays(const LockedDib& source, int grade, kernels::GrayRule rule) {
  const DibHeader& header = source.header();
  if (header.depth == 1 && (grade < 0 || grade > 2)) return Error::kParameter;
  if (!has_pixels(header)) return Error::kMemory;
  const bool keeps_indices = header.depth == 4 || header.depth == 8;
  DibHeader result_header = header;
  result_header.depth = header.depth == 4 ? 4 : 8;
  result_header.colors_used = header.depth == 4 ? 16 : 256;
  result_header.image_bytes = static_cast<uint32_t>(rows_bytes(result_header).value());

  const auto whole = whole_of(source);
  if (!whole) return Error::kMemory;
  const ByteCount slack = keeps_indices ? ByteCount(0) : slack_bytes(header);
  auto result = OwnedDib::allocate(bits_offset(result_header) + rows_bytes(result_header) + slack);
  if (!result) return result;
  write_header(result->bytes(), result_header);

  const auto colors = table_of(result->bytes(), result_header.colors_used);
  const auto from = pixels_of(whole->bytes(), header);
  const auto to = pixels_of(result->bytes(), result_header);
  if (keeps_indices) {
    const auto source_colors = table_of(whole->bytes(), std::min<size_t>(DIBNumColors(header), colors.size()));
    std::ranges::transform(source_colors, colors.begin(), [&](Rgb color) {
      const uint8_t gray = rule == kernels::GrayRule::kMean ? mean_of(color) : weighted_gray_of(color);
      return Rgb{gray, gray, gray, 0};
    });
    std::memcpy(to.row(0).data(), from.row(0).data(), result_header.image_bytes);
    return result;
  }
  write_gray_ramp(colors);
  if (header.depth == 24)
    kernels::tone().gray_rows(from, to, rule);
  else
    kernels::tone().expand_bits(from, to, smoothing_for(grade, header.height), false);
  return result;
}

Result<OwnedDib> in_falling_grays(const LockedDib& source, int grade) {
  const DibHeader& header = source.header();
  if (!has_pixels(header)) return Error::kMemory;
  DibHeader result_header{.width = header.width,
                          .height = header.height,
                          .depth = 8,
                          .x_per_metre = header.x_per_metre,
                          .y_per_metre = header.y_per_metre};
  result_header.image_bytes = static_cast<uint32_t>(rows_bytes(result_header).value());
  const auto whole = whole_of(source);
  if (!whole) return Error::kMemory;
  auto result = OwnedDib::allocate(bits_offset(result_header) + rows_bytes(result_header) + slack_bytes(header));
  if (!result) return result;
  write_header(result->bytes(), result_header);
  write_inverted_gray_ramp(table_of(result->bytes(), kTableColors));

  // Set bits are to be the dark ones.
  const auto lightness = [](Rgb color) { return color.blue * color.green * color.red; };
  const auto colors = table_of(whole->bytes(), 2);
  const bool inverted = lightness(colors[0]) < lightness(colors[1]);
  kernels::tone().expand_bits(pixels_of(whole->bytes(), header), pixels_of(result->bytes(), result_header),
                              smoothing_for(grade, header.height), inverted);
  return result;
}

// ---- Cleaning ----

Result<OwnedDib> cleaned(const LockedDib& source, int level, kernels::Reach reach) {
  constexpr int kLeast = 20, kMost = 100;
  const DibHeader& header = source.header();
  if (level < kLeast || level > kMost || header.size != kHeaderBytes) return Error::kUnreported;
  if (header.depth != 1 && (header.depth != 8 || header.planes != 1)) return Error::kUnreported;
  const auto whole = whole_of(source);
  if (!whole) return Error::kUnreported;
  const auto colors = table_of(whole->bytes(), header.depth == 1 ? 2 : kTableColors);
  if (!is_gray(colors)) return Error::kUnreported;

  auto result = OwnedDib::allocate(source.block().size());
  if (!result) return Error::kUnreported;
  std::ranges::copy(source.block(), result->bytes().begin());
  const auto to = CompleteBytes::of(result->bytes(), whole->bytes().size());
  if (!to) return Error::kUnreported;
  if (!has_pixels(header)) return result;
  const bool is_black_first = colors[0].blue == 0;
  const int adjusted = is_black_first ? kMost + kLeast - level : level;
  // Bits behind the last row count as neighbours too, as far as the block goes.
  const auto memory = source.block().size() > whole->bytes().size() ? source.block() : whole->bytes();
  const auto from = pixels_of(whole->bytes(), header);
  const auto rows = pixels_of(to->bytes(), header);
  if (header.depth == 1)
    kernels::filter().clean_bits(memory.subspan(to_size(bits_offset(header))), rows, adjusted * 8 / 100, reach);
  else
    kernels::filter().take_rank(from, rows, std::min((kMost + kLeast - adjusted) * 9 / 100, 8), reach);
  to->write_back();
  return result;
}

}  // namespace vorel
