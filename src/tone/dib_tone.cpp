#include "tone/dib_tone.h"

#include <algorithm>
#include <cstring>

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

Result<HGLOBAL> with_levels(HGLOBAL handle, const LockedDib& source, const ComponentTable& table, Where where) {
  const DibHeader& header = source.header();
  const auto whole = whole_of(source);
  if (!whole) return Error::kMemory;
  auto target = target_of(handle, source, *whole, where, true);
  if (!target) return target.error();

  ComponentTable levels;
  std::ranges::transform(table_of(whole->bytes(), kTableColors), levels.begin(), [&](Rgb color) {
    return table[static_cast<size_t>((color.blue + color.green + color.red + 1) / 3)];
  });
  write_gray_ramp(writable_table(target->bytes(), header));
  const auto from = pixels_of(whole->bytes(), header);
  const auto to = pixels_of(target->bytes(), header);
  for (int y = 0; y < header.height && has_pixels(header); ++y)
    std::ranges::transform(from.row(y), to.row(y).begin(), [&](uint8_t index) { return levels[index]; });
  return target->release();
}

Result<OwnedDib> with_components(const LockedDib& source, const ComponentTable& table) {
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
  for (int y = 0; y < header.height && has_pixels(header); ++y)
    std::ranges::transform(from.row(y), rows.row(y).begin(), [&](uint8_t component) { return table[component]; });
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
  const auto colors = table_of(whole->bytes(), kTableColors);
  const auto from = pixels_of(whole->bytes(), header);
  const auto to = pixels_of(result->bytes(), result_header);
  for (int y = 0; y < header.height; ++y) {
    uint8_t* pixel = to.row(y).data();
    for (const uint8_t index : from.row(y)) {
      const Rgb color = colors[index];
      *pixel++ = color.blue;
      *pixel++ = color.green;
      *pixel++ = color.red;
    }
  }
  return result;
}

// ---- Filters ----

namespace {

// Divides sums in place. Cutting towards zero is exact in single precision for sums of 16 bits.
void divide(std::span<int16_t> sums, int32_t divisor, auto&& shifted) {
  for (int bits = 0; bits <= 6; ++bits) {
    if (divisor != 1 << bits) continue;
    for (int16_t& sum : sums) sum = shifted(sum, bits);
    return;
  }
  const auto by = static_cast<float>(divisor);
  for (int16_t& sum : sums) sum = static_cast<int16_t>(static_cast<float>(sum) / by);
}

}  // namespace

Result<HGLOBAL> filtered_gray(HGLOBAL handle, const LockedDib& source, const Kernel& kernel, Where where) {
  const DibHeader& header = source.header();
  const auto whole = whole_of(source);
  if (!whole) return Error::kMemory;
  auto target = target_of(handle, source, *whole, where, false);
  if (!target) return target.error();
  const bool is_filtered = has_pixels(header);
  Convolution convolution(kernel, is_filtered ? header.width : 0, is_filtered ? header.height : 0);

  write_gray_ramp(writable_table(target->bytes(), header));
  const auto from = pixels_of(whole->bytes(), header);
  const auto to = pixels_of(target->bytes(), header);
  // Sums have 32 bits here as far as callers can tell: negative ones become large numbers when they are shifted.
  const auto shifted = [](int16_t sum, int bits) {
    return static_cast<int16_t>(static_cast<uint32_t>(int32_t{sum}) >> bits);
  };
  convolution.run([&](int y, std::span<uint8_t> samples) { std::ranges::copy(from.row(y), samples.begin()); },
                  [&](int y, std::span<int16_t> sums, std::span<const uint8_t>) {
                    if (kernel.clamps_sums)
                      for (int16_t& sum : sums) sum = std::clamp<int16_t>(sum, 0, 255);
                    divide(sums, kernel.divisor, shifted);
                    std::ranges::transform(sums, to.row(y).begin(), [](int16_t sum) { return static_cast<uint8_t>(sum); });
                  });
  return target->release();
}

Result<HGLOBAL> filtered_color(HGLOBAL handle, const LockedDib& source, const Kernel& kernel, Intensity intensity,
                               Where where) {
  const DibHeader& header = source.header();
  const auto whole = whole_of(source);
  if (!whole) return Error::kMemory;
  const bool is_filtered = has_pixels(header);
  Convolution convolution(kernel, is_filtered ? header.width : 0, is_filtered ? header.height : 0);
  auto target = target_of(handle, source, *whole, where, true);
  if (!target) return target.error();
  // A table, which 24 bits have no use for, goes along.
  const auto table = whole->bytes().subspan(kHeaderBytes, to_size(palette_bytes(header)));
  std::ranges::copy(table, target->bytes().begin() + kHeaderBytes);

  const auto from = pixels_of(whole->bytes(), header);
  const auto to = pixels_of(target->bytes(), header);
  const auto read = [&](auto intensity_of) {
    return [&, intensity_of](int y, std::span<uint8_t> samples) {
      const uint8_t* pixel = from.row(y).data();
      for (uint8_t& sample : samples) {
        sample = static_cast<uint8_t>(intensity_of(pixel[0], pixel[1], pixel[2]));
        pixel += 3;
      }
    };
  };
  const auto shifted = [](int16_t sum, int bits) { return static_cast<int16_t>(sum >> bits); };
  const auto write = [&](int y, std::span<int16_t> sums, std::span<const uint8_t> samples) {
    divide(sums, kernel.divisor, shifted);
    const uint8_t* pixel = from.row(y).data();
    uint8_t* result = to.row(y).data();
    for (size_t x = 0; x < sums.size(); ++x) {
      const int change = static_cast<int16_t>(sums[x] - samples[x]);
      for (int component = 0; component < 3; ++component)
        *result++ = static_cast<uint8_t>(std::clamp(*pixel++ + change, 0, 255));
    }
  };
  // The weights are those of grey, but blue's and red's have changed places. Callers count on it.
  if (intensity == Intensity::kWeighted)
    convolution.run(read([](int blue, int green, int red) { return (8 * blue + 15 * green + 3 * red) / 26; }), write);
  else
    convolution.run(read([](int blue, int green, int red) { return (blue + green + red) / 3; }), write);
  return target->release();
}

// ---- Greys ----

namespace {

// Smoothing over five rows takes six.
Smoothing smoothing_for(int grade, int32_t height) {
  if (grade == 2 && height < 4) return Smoothing::kNone;
  if (grade == 2 && height < 6) return Smoothing::kBy3;
  return static_cast<Smoothing>(grade);
}

// Bytes behind the pixels of blocks whose rows are smoothed or made of colours.
ByteCount slack_bytes(const DibHeader& header) {
  return (ByteCount(static_cast<uint32_t>(header.width)) * 40 + 155).value() / 32 * 4;
}

}  // namespace

Result<OwnedDib> in_grays(const LockedDib& source, int grade, GrayRule rule) {
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
      const uint8_t gray = gray_of(color, rule);
      return Rgb{gray, gray, gray, 0};
    });
    std::memcpy(to.row(0).data(), from.row(0).data(), result_header.image_bytes);
    return result;
  }
  write_gray_ramp(colors);
  if (header.depth == 24)
    gray_rows(from, to, rule);
  else
    expand_bits(from, to, smoothing_for(grade, header.height), false);
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
  write_falling_gray_ramp(table_of(result->bytes(), kTableColors));

  // Set bits are to be the dark ones.
  const auto lightness = [](Rgb color) { return color.blue * color.green * color.red; };
  const auto colors = table_of(whole->bytes(), 2);
  const bool inverted = lightness(colors[0]) < lightness(colors[1]);
  expand_bits(pixels_of(whole->bytes(), header), pixels_of(result->bytes(), result_header),
              smoothing_for(grade, header.height), inverted);
  return result;
}

// ---- Cleaning ----

Result<OwnedDib> cleaned(const LockedDib& source, int level, Reach reach) {
  constexpr int kLeast = 20, kMost = 100;
  const DibHeader& header = source.header();
  if (level < kLeast || level > kMost || header.size != kHeaderBytes) return Error::kUnreported;
  if (header.depth != 1 && (header.depth != 8 || header.planes != 1)) return Error::kUnreported;
  const auto whole = whole_of(source);
  if (!whole) return Error::kUnreported;
  const auto colors = table_of(whole->bytes(), header.depth == 1 ? 2 : kTableColors);
  const auto is_gray = [](Rgb color) { return color.blue == color.green && color.green == color.red; };
  if (!std::ranges::all_of(colors, is_gray)) return Error::kUnreported;

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
    clean_bits(memory.subspan(to_size(bits_offset(header))), rows, adjusted * 8 / 100, reach);
  else
    take_rank(from, rows, std::min((kMost + kLeast - adjusted) * 9 / 100, 8), reach);
  to->write_back();
  return result;
}

}  // namespace vorel
