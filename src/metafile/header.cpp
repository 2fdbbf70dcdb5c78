#include "metafile/header.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "core/saturate.h"

namespace vorel::metafile {
namespace {

constexpr int kMostUnitsPerInch = 1440;
constexpr int64_t kHundredthsOfMillimetrePerInch = 2540;

constexpr int16_t saturated_word(int64_t value) {
  return static_cast<int16_t>(
      std::clamp<int64_t>(value, std::numeric_limits<int16_t>::min(), std::numeric_limits<int16_t>::max()));
}

// Fails if the bytes end within the header.
template <class Header>
Result<Header> header_at(std::span<const uint8_t> start, size_t offset) {
  if (start.size() < offset + sizeof(Header)) return Error::kFileIo;
  Header header;
  std::memcpy(&header, start.data() + offset, sizeof header);
  return header;
}

int16_t placeable_length(int pixels, uint16_t units_per_inch, int dots_per_inch) {
  return dots_per_inch <= 0 ? int16_t{0} : saturated_word(int64_t{pixels} * units_per_inch / dots_per_inch);
}

Extent extent_of(const PlaceableHeader& header) {
  return {.width = header.right - header.left,
          .height = header.bottom - header.top,
          .x_units = header.units_per_inch,
          .y_units = header.units_per_inch};
}

// The bounds give the size, and bounds and frame together the units per inch: the bounds cancel out and the frame remains.
// Bounds without width or height give no size; a metafile that draws nothing has bounds of -1.
Extent extent_of(const EnhancedHeader& header) {
  const Edges &bounds = header.bounds, &frame = header.frame;
  if (bounds.left == bounds.right || bounds.top == bounds.bottom) return {};
  return {.width = int64_t{frame.right} - frame.left,
          .height = int64_t{frame.bottom} - frame.top,
          .x_units = kHundredthsOfMillimetrePerInch,
          .y_units = kHundredthsOfMillimetrePerInch};
}

}  // namespace

uint16_t checksum_of(const PlaceableHeader& header) {
  std::array<uint16_t, 10> words;
  std::memcpy(words.data(), &header, sizeof words);
  uint16_t sum = 0;
  for (const uint16_t word : words) sum ^= word;
  return sum;
}

PlaceableHeader placeable_header_for(Size pixels, Resolution screen) {
  PlaceableHeader header;
  const int64_t mean = (int64_t{screen.x} + screen.y) / 2;
  header.units_per_inch = static_cast<uint16_t>(std::clamp<int64_t>(mean, 0, kMostUnitsPerInch));
  header.right = placeable_length(pixels.width, header.units_per_inch, screen.x);
  header.bottom = placeable_length(pixels.height, header.units_per_inch, screen.y);
  header.checksum = checksum_of(header);
  return header;
}

Edges enhanced_frame_for(Size pixels) {
  constexpr int kPixelsPerInch = 96;
  const auto length = [](int count) { return saturated(int64_t{count} * kHundredthsOfMillimetrePerInch / kPixelsPerInch); };
  return {.left = 0, .top = 0, .right = length(pixels.width), .bottom = length(pixels.height)};
}

Result<MetafileStart> read_metafile_start(std::span<const uint8_t> start) {
  MetafileStart found;
  if (VOREL_TRY(header_at<uint32_t>(start, 0)) == kPlaceableKey) {
    found.extent = extent_of(VOREL_TRY(header_at<PlaceableHeader>(start, 0)));
    found.offset = kPlaceableBytes;
  }
  const auto windows = VOREL_TRY(header_at<WindowsMetafileHeader>(start, found.offset));
  found.bytes = uint64_t{windows.words} * 2;
  found.is_enhanced = size_t{windows.header_words} * 2 != kWindowsHeaderBytes;
  if (!found.is_enhanced) return found;
  const auto enhanced = VOREL_TRY(header_at<EnhancedHeader>(start, found.offset));
  found.bytes = enhanced.bytes;
  found.extent = extent_of(enhanced);
  return found;
}

Size five_inches(Resolution screen) { return {saturated(int64_t{screen.x} * 5), saturated(int64_t{screen.y} * 5)}; }

Size pixels_of(const Extent& extent, Resolution screen) {
  if (extent.x_units <= 0 || extent.y_units <= 0) return five_inches(screen);
  // A length has 33 bits at most, and a resolution 32.
  const Size pixels{saturated(extent.width * screen.x / extent.x_units),
                    saturated(extent.height * screen.y / extent.y_units)};
  return pixels.width > 0 && pixels.height > 0 ? pixels : five_inches(screen);
}

}  // namespace vorel::metafile
