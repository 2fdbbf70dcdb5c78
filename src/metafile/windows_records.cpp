#include <algorithm>
#include <cstring>

#include "metafile/header.h"
#include "metafile/record.h"
#include "metafile/records.h"

namespace vorel::metafile {
namespace {

// A record consists of its length in words of 16 bits, its function and its parameters.
constexpr size_t kShortestRecord = 6;
constexpr size_t kFunctionAt = 4;
constexpr uint16_t kInMemory = 1;
constexpr uint16_t kEscape = 0x0626, kCommentEscape = 15;
constexpr uint16_t kBitBlt = 0x0922, kStretchBlt = 0x0B23, kDibStretchBlt = 0x0B41, kPatBlt = 0x061D;
constexpr uint16_t kBrush = 0x02FC;

constexpr size_t parameter_at(size_t index) { return kShortestRecord + 2 * index; }
uint16_t parameter(const Record& record, size_t index) { return record.at<uint16_t>(parameter_at(index)); }

// Forms without a picture have one more parameter, in front of the last four.
constexpr size_t kBitBltAlone = parameter_at(9), kStretchBltAlone = parameter_at(11);

// Items behind the parameters.
bool has_items(const Record& record, size_t first_parameter, uint32_t count, size_t bytes) {
  return record.has(parameter_at(first_parameter), ByteCount(count) * bytes);
}

// Checks a record, given the number of objects that the metafile has at a time.
using Check = bool (*)(const Record& record, uint32_t objects);

bool anything(const Record&, uint32_t) { return true; }

template <size_t... kParameters>
bool names_objects(const Record& record, uint32_t objects) {
  return ((parameter(record, kParameters) < objects) && ...);
}

// The players' counts are signed.
constexpr uint32_t kMostItems = 0x7FFF;
constexpr size_t kPointBytes = 4, kColorBytes = 4;

bool has_points(const Record& record, uint32_t) {
  return parameter(record, 0) <= kMostItems && has_items(record, 1, parameter(record, 0), kPointBytes);
}

bool has_polygons(const Record& record, uint32_t) {
  const uint32_t polygons = parameter(record, 0);
  if (polygons > kMostItems || !has_items(record, 1, polygons, 2)) return false;
  uint32_t points = 0;
  for (uint32_t i = 0; i < polygons; ++i) points += parameter(record, 1 + i);
  return has_items(record, 1 + polygons, points, kPointBytes);
}

constexpr uint32_t even(uint32_t count) { return count + count % 2; }

// Two parameters follow the text.
bool has_text(const Record& record, uint32_t) {
  const uint32_t length = parameter(record, 0);
  return length <= kMostItems && has_items(record, 3, even(length), 1);
}

// Options select further parts: a rectangle in front of the text; glyphs of 16 bits instead of characters; distances behind
// it, which players detect by the record's length.
bool has_extended_text(const Record& record, uint32_t) {
  constexpr uint16_t kOpaque = 0x0002, kClipped = 0x0004, kGlyphs = 0x0010, kTwoDistances = 0x2000;
  const uint32_t length = parameter(record, 2), options = parameter(record, 3);
  const size_t text = parameter_at((options & (kOpaque | kClipped)) != 0 ? 8 : 4);
  const uint32_t bytes = even((options & kGlyphs) != 0 ? 2 * length : length);
  if (length > kMostItems || !record.has(text, bytes)) return false;
  const size_t rest = record.size() - text - bytes;
  return (options & kTwoDistances) == 0 || rest < 2 * length || rest >= 4 * length;
}

bool has_escape_data(const Record& record, uint32_t) { return has_items(record, 2, parameter(record, 1), 1); }
bool has_colors(const Record& record, uint32_t) { return has_items(record, 2, parameter(record, 1), kColorBytes); }

bool names_object_or_none(const Record& record, uint32_t objects) {
  return parameter(record, 0) == 0 || names_objects<0>(record, objects);
}

// The name may be shorter than its field if it is terminated.
bool has_font_name(const Record& record, uint32_t) {
  constexpr size_t kName = parameter_at(9), kNameBytes = 32;
  for (size_t i = 0; i < kNameBytes; ++i)
    if (!record.has(kName + i, 1) || record.at<uint8_t>(kName + i) == 0) return record.has(kName + i, 1);
  return true;
}

// Scan lines, each with its number of ends, top and bottom, the ends, and the number again.
bool has_region(const Record& record, uint32_t) {
  size_t at = 11;
  for (uint32_t scans = parameter(record, 5); scans > 0; --scans) {
    const uint32_t ends = parameter(record, at);
    if (ends % 2 != 0 || !has_items(record, at, ends + 4, 2) || parameter(record, at + ends + 3) != ends) return false;
    at += ends + 4;
  }
  return true;
}

bool has_dib(const Record& record, size_t first_parameter, uint32_t use) {
  const size_t at = parameter_at(first_parameter);
  const auto parts = dib_parts(record, at, static_cast<ColorUse>(use != 0));
  return parts && record.has(at, parts->info + parts->image);
}

template <size_t kFirst, size_t kUse>
bool has_dib_of_use(const Record& record, uint32_t) {
  return has_dib(record, kFirst, parameter(record, kUse));
}

bool has_dib_or_none(const Record& record, uint32_t) { return record.size() <= parameter_at(9) || has_dib(record, 8, 0); }

bool has_stretched_dib_or_none(const Record& record, uint32_t) {
  return record.size() == kStretchBltAlone || has_dib(record, 10, 0);
}

// The rows of a part of the picture; the record states their number.
bool has_dib_rows(const Record& record, uint32_t) {
  const auto parts = dib_parts(record, parameter_at(9), static_cast<ColorUse>(parameter(record, 0) != 0));
  if (!parts) return false;
  const ByteCount rows = parts->row == ByteCount(0) ? parts->image : parts->row * parameter(record, 1);
  return record.has(parameter_at(9), parts->info + std::min(rows, parts->image));
}

// Rows of a bitmap without colours of its own, each an even number of bytes.
bool has_rows(const Record& record, size_t bits, uint32_t width, uint32_t height, uint32_t bits_per_pixel) {
  if (width == 0 || height == 0) return true;
  const ByteCount row = (uint64_t{width} * bits_per_pixel + 15) / 16 * 2;
  return height <= kMostItems && width <= kMostItems && record.has(bits, row * height);
}

// A bitmap of this kind: width, height, bytes of a row, planes and bits per pixel, rows. The planes and bits are bytes, but
// some players read words, and at other places.
template <size_t kWidth, size_t kWidthOfOthers>
bool has_bitmap_or_none(const Record& record, uint32_t) {
  if (record.size() == parameter_at(kWidth)) return true;
  const auto holds = [&](size_t width, size_t bits, uint32_t bits_per_pixel) {
    return has_rows(record, parameter_at(bits), parameter(record, width), parameter(record, width + 1), bits_per_pixel);
  };
  const uint32_t packed = parameter(record, kWidth + 3);
  const uint32_t apart = uint32_t{parameter(record, kWidthOfOthers + 3)} * parameter(record, kWidthOfOthers + 4);
  return holds(kWidth, kWidth + 4, (packed & 0xFF) * (packed >> 8)) && holds(kWidthOfOthers, kWidthOfOthers + 5, apart);
}

bool has_pattern(const Record& record, uint32_t) {
  constexpr size_t kBits = kShortestRecord + 32;
  const uint32_t packed = parameter(record, 4);
  return has_rows(record, kBits, parameter(record, 1), parameter(record, 2), (packed & 0xFF) * (packed >> 8));
}

// The least number of parameters of each function, in words, and further checks. Functions that are not listed draw nothing.
constexpr struct Function {
  uint16_t number;
  uint8_t parameters;
  Check check;
} kFunctions[] = {
    {0x0037, 2, has_colors},                          // SetPaletteEntries
    {0x00F7, 2, has_colors},                          // CreatePalette
    {0x0102, 1, anything},                            // SetBkMode
    {0x0103, 1, anything},                            // SetMapMode
    {0x0104, 1, anything},                            // SetROP2
    {0x0106, 1, anything},                            // SetPolyFillMode
    {0x0107, 1, anything},                            // SetStretchBltMode
    {0x0108, 1, anything},                            // SetTextCharacterExtra
    {0x0127, 1, anything},                            // RestoreDC
    {0x012A, 1, names_objects<0>},                    // InvertRegion
    {0x012B, 1, names_objects<0>},                    // PaintRegion
    {0x012C, 1, names_object_or_none},                // SelectClipRegion
    {0x012D, 1, names_objects<0>},                    // SelectObject
    {0x012E, 1, anything},                            // SetTextAlign
    {0x0139, 1, anything},                            // ResizePalette
    {0x0142, 2, has_dib_of_use<2, 1>},                // DIBCreatePatternBrush
    {0x0149, 1, anything},                            // SetLayout
    {0x01F0, 1, names_objects<0>},                    // DeleteObject
    {0x01F9, 16, has_pattern},                        // CreatePatternBrush
    {0x0201, 2, anything},                            // SetBkColor
    {0x0209, 2, anything},                            // SetTextColor
    {0x020A, 2, anything},                            // SetTextJustification
    {0x020B, 2, anything},                            // SetWindowOrg
    {0x020C, 2, anything},                            // SetWindowExt
    {0x020D, 2, anything},                            // SetViewportOrg
    {0x020E, 2, anything},                            // SetViewportExt
    {0x020F, 2, anything},                            // OffsetWindowOrg
    {0x0211, 2, anything},                            // OffsetViewportOrg
    {0x0213, 2, anything},                            // LineTo
    {0x0214, 2, anything},                            // MoveTo
    {0x0220, 2, anything},                            // OffsetClipRgn
    {0x0228, 2, names_objects<0, 1>},                 // FillRegion
    {0x0231, 2, anything},                            // SetMapperFlags
    {0x0234, 1, names_objects<0>},                    // SelectPalette
    {0x02FA, 5, anything},                            // CreatePenIndirect
    {0x02FB, 9, has_font_name},                       // CreateFontIndirect
    {kBrush, 4, anything},                            // CreateBrushIndirect
    {0x0324, 1, has_points},                          // Polygon
    {0x0325, 1, has_points},                          // Polyline
    {0x0410, 4, anything},                            // ScaleWindowExt
    {0x0412, 4, anything},                            // ScaleViewportExt
    {0x0415, 4, anything},                            // ExcludeClipRect
    {0x0416, 4, anything},                            // IntersectClipRect
    {0x0418, 4, anything},                            // Ellipse
    {0x0419, 4, anything},                            // FloodFill
    {0x041B, 4, anything},                            // Rectangle
    {0x041F, 4, anything},                            // SetPixel
    {0x0429, 4, names_objects<0, 1>},                 // FrameRegion
    {0x0436, 2, has_colors},                          // AnimatePalette
    {0x0521, 3, has_text},                            // TextOut
    {0x0538, 1, has_polygons},                        // PolyPolygon
    {0x0548, 5, anything},                            // ExtFloodFill
    {0x061C, 6, anything},                            // RoundRect
    {kPatBlt, 6, anything},                           // PatBlt
    {kEscape, 2, has_escape_data},                    // Escape
    {0x06FF, 11, has_region},                         // CreateRegion
    {0x0817, 8, anything},                            // Arc
    {0x081A, 8, anything},                            // Pie
    {0x0830, 8, anything},                            // Chord
    {kBitBlt, 9, has_bitmap_or_none<9, 7>},           // BitBlt
    {0x0940, 9, has_dib_or_none},                     // DIBBitBlt
    {0x0A32, 4, has_extended_text},                   // ExtTextOut
    {kStretchBlt, 11, has_bitmap_or_none<11, 10>},    // StretchBlt
    {kDibStretchBlt, 10, has_stretched_dib_or_none},  // DIBStretchBlt
    {0x0D33, 9, has_dib_rows},                        // SetDIBitsToDevice
    {0x0F43, 11, has_dib_of_use<11, 2>},              // StretchDIBits
};
static_assert(std::ranges::is_sorted(kFunctions, {}, &Function::number));

bool agrees_with_its_size(const Record& record, uint32_t objects) {
  const auto number = record.at<uint16_t>(kFunctionAt);
  const Function* function = std::ranges::lower_bound(kFunctions, number, {}, &Function::number);
  if (function == std::end(kFunctions) || function->number != number) return true;
  return record.has(kShortestRecord, size_t{function->parameters} * 2) && function->check(record, objects);
}

// The first of the records; empty if it is incomplete.
std::span<uint8_t> first_record(std::span<uint8_t> records) {
  const uint64_t length = uint64_t{Record(records).at<uint32_t>(0)} * 2;
  if (length < kShortestRecord || length > records.size()) return {};
  return records.first(static_cast<size_t>(length));
}

void set_word(std::span<uint8_t> record, size_t offset, uint16_t word) {
  std::memcpy(record.data() + offset, &word, sizeof word);
}

constexpr uint16_t kHatchedStyle = 2;

// Height, width, top and left begin at a parameter.
void make_pattern_blt(std::span<uint8_t> bytes, size_t first) {
  set_word(bytes, kFunctionAt, kPatBlt);
  for (size_t i = 0; i < 4; ++i) set_word(bytes, parameter_at(2 + i), parameter(Record(bytes), first + i));
}

// Changes complete records that players handle wrongly.
void make_harmless(std::span<uint8_t> bytes) {
  const Record record(bytes);
  switch (record.at<uint16_t>(kFunctionAt)) {
    case kEscape: set_word(bytes, parameter_at(0), kCommentEscape); break;
    case kBrush:  // other styles contain a pointer: a default brush instead
      if (parameter(record, 0) <= kHatchedStyle) break;
      for (size_t i = 0; i < 4; ++i) set_word(bytes, parameter_at(i), 0);
      break;
    // Players expect a picture in the short forms, too.
    case kBitBlt:
      if (record.size() == kBitBltAlone) make_pattern_blt(bytes, 5);
      break;
    case kStretchBlt:
    case kDibStretchBlt:
      if (record.size() == kStretchBltAlone) make_pattern_blt(bytes, 7);
      break;
    default: break;
  }
}

}  // namespace

std::span<uint8_t> playable_windows_metafile(std::span<uint8_t> block) {
  if (block.size() < kWindowsHeaderBytes + kRoomBehindRecords) return {};
  const auto metafile = block.first(block.size() - kRoomBehindRecords);
  WindowsMetafileHeader header;
  std::memcpy(&header, metafile.data(), sizeof header);
  size_t end = kWindowsHeaderBytes;
  for (;;) {
    const auto record = first_record(metafile.subspan(end));
    if (record.empty() || !agrees_with_its_size(Record(record), header.objects)) break;
    make_harmless(record);
    end += record.size();
  }
  constexpr uint16_t kEndRecord[] = {3, 0, 0};
  std::ranges::fill(block.subspan(end, kRoomBehindRecords), uint8_t{0});
  std::memcpy(block.data() + end, kEndRecord, sizeof kEndRecord);
  end += kRoomBehindRecords;

  header.type = kInMemory;
  header.words = static_cast<uint32_t>(end / 2);
  // An object without a place is never deleted, and not every player reads numbers where the record has them.
  header.objects = UINT16_MAX;
  std::memcpy(metafile.data(), &header, sizeof header);
  return block.first(end);
}

}  // namespace vorel::metafile
