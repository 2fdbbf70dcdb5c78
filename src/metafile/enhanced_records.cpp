#include <algorithm>
#include <cstring>

#include "metafile/header.h"
#include "metafile/record.h"
#include "metafile/records.h"

namespace vorel::metafile {
namespace {

// A record is its type, its length in bytes and its parameters, all in units of four bytes.
constexpr size_t kShortestRecord = 8;
constexpr uint32_t kHeader = 1, kEnd = 14;

uint32_t number(const Record& record, size_t offset) { return record.at<uint32_t>(offset); }

// Checks a record, given the number of objects that the metafile has at a time.
using Check = bool (*)(const Record& record, uint32_t objects);

bool anything(const Record&, uint32_t) { return true; }

// ---- Objects ----

// Number 0 is the metafile itself.
template <size_t kAt>
bool names_object(const Record& record, uint32_t objects) {
  return number(record, kAt) >= 1 && number(record, kAt) < objects;
}

constexpr uint32_t kStockObject = 0x80000000, kStockObjects = 20;

template <size_t kAt>
bool names_object_or_stock(const Record& record, uint32_t objects) {
  return names_object<kAt>(record, objects) || number(record, kAt) - kStockObject < kStockObjects;
}

// Other styles contain a pointer.
bool is_plain_style(uint32_t style) {
  constexpr uint32_t kHatched = 2;
  return style <= kHatched;
}

bool makes_brush(const Record& record, uint32_t objects) {
  return names_object<8>(record, objects) && is_plain_style(number(record, 12));
}

bool makes_pen(const Record& record, uint32_t objects) {
  return names_object<8>(record, objects) && is_plain_style(number(record, 36)) &&
         record.has(52, ByteCount(number(record, 48)) * 4);
}

constexpr size_t kColorBytes = 4;

bool makes_palette(const Record& record, uint32_t objects) {
  return names_object<8>(record, objects) && record.has(16, record.at<uint16_t>(14) * kColorBytes);
}

bool sets_palette_entries(const Record& record, uint32_t objects) {
  return names_object<8>(record, objects) && record.has(20, ByteCount(number(record, 16)) * kColorBytes);
}

// ---- Points and regions ----

template <size_t kPointBytes>
bool has_points(const Record& record, uint32_t) {
  return record.has(28, ByteCount(number(record, 24)) * kPointBytes);
}

// A byte for each point gives its type.
template <size_t kPointBytes>
bool has_typed_points(const Record& record, uint32_t) {
  return record.has(28, ByteCount(number(record, 24)) * (kPointBytes + 1));
}

template <size_t kPointBytes>
bool has_point_lists(const Record& record, uint32_t) {
  const uint32_t lists = number(record, 24), points = number(record, 28);
  if (!record.has(32, ByteCount(lists) * 4 + ByteCount(points) * kPointBytes)) return false;
  uint64_t in_lists = 0;
  for (size_t i = 0; i < lists; ++i) in_lists += number(record, 32 + 4 * i);
  return in_lists <= points;
}

bool has_region(const Record& record, size_t bytes_at, size_t offset) {
  constexpr uint32_t kRegionHeader = 32, kRectangle = 16;
  const uint32_t bytes = number(record, bytes_at);
  return record.has(offset, bytes) && bytes >= kRegionHeader && number(record, offset) == kRegionHeader &&
         kRegionHeader + ByteCount(number(record, offset + 8)) * kRectangle <= ByteCount(bytes);
}

template <size_t kOffset>
bool has_painted_region(const Record& record, uint32_t) {
  return has_region(record, 24, kOffset);
}

template <size_t kOffset>
bool has_region_and_brush(const Record& record, uint32_t objects) {
  return has_region(record, 24, kOffset) && names_object_or_stock<28>(record, objects);
}

// No region at all removes the clipping.
bool has_clip_region(const Record& record, uint32_t) { return number(record, 8) == 0 || has_region(record, 8, 16); }

bool has_gradient(const Record& record, uint32_t) {
  constexpr uint32_t kTriangles = 2;
  constexpr size_t kVertexBytes = 16;
  const uint32_t vertices = number(record, 24), indices_each = number(record, 32) == kTriangles ? 3 : 2;
  const ByteCount indices = ByteCount(number(record, 28)) * indices_each, mesh = 36 + ByteCount(vertices) * kVertexBytes;
  if (!record.has(mesh, indices * 4)) return false;
  for (uint64_t i = 0; i < indices.value(); ++i)
    if (number(record, static_cast<size_t>(mesh.value() + 4 * i)) >= vertices) return false;
  return true;
}

// ---- Texts ----

enum TextOption : uint32_t { kGlyphs = 0x10, kNoRectangle = 0x100, kBytesAlone = 0x200, kTwoDistances = 0x2000 };

// A text's description: a point, the number of characters, their offset, options, a rectangle, the offset of the distances.
constexpr size_t kTextBytes = 40;

template <size_t kCharacterBytes>
bool has_text(const Record& record, ByteCount offset) {
  if (!record.has(offset, kTextBytes)) return false;
  const auto text = static_cast<size_t>(offset.value());
  const ByteCount characters = number(record, text + 8);
  const uint32_t options = number(record, text + 16), distances = number(record, text + 36);
  const size_t bytes = (options & kGlyphs) != 0 ? 2 : kCharacterBytes;
  const size_t distance_bytes = (options & kTwoDistances) != 0 ? 8 : 4;
  return record.has(number(record, text + 12), characters * bytes) &&
         (distances == 0 || record.has(distances, characters * distance_bytes));
}

template <size_t kCharacterBytes>
bool has_one_text(const Record& record, uint32_t) {
  return has_text<kCharacterBytes>(record, 36);
}

template <size_t kCharacterBytes>
bool has_texts(const Record& record, uint32_t) {
  const uint32_t texts = number(record, 36);
  if (!record.has(40, ByteCount(texts) * kTextBytes)) return false;
  for (uint32_t i = 0; i < texts; ++i)
    if (!has_text<kCharacterBytes>(record, 40 + ByteCount(i) * kTextBytes)) return false;
  return true;
}

bool has_small_text(const Record& record, uint32_t) {
  const uint32_t options = number(record, 20);
  const size_t text = (options & kNoRectangle) != 0 ? 36 : 52;
  return record.has(text, ByteCount(number(record, 16)) * ((options & kBytesAlone) != 0 ? 1 : 2));
}

// ---- Pictures ----

// A use of colours that some players treat as kColors.
constexpr uint32_t kNoColors = 2;

// Offset of these numbers in records that are played as DIBs; other pictures become bitmaps first.
constexpr size_t kPartsOfDibs = 48;

// Four numbers: offset and bytes of the header with colours, then of the rows.
bool has_dib(const Record& record, size_t parts_at, size_t use_at, ByteCount rows) {
  const uint32_t info = number(record, parts_at), info_bytes = number(record, parts_at + 4);
  const uint32_t bits = number(record, parts_at + 8), bits_bytes = number(record, parts_at + 12);
  const uint32_t use = number(record, use_at);
  if (use > kNoColors || !record.has(info, info_bytes) || !record.has(bits, bits_bytes)) return false;
  const auto parts = dib_parts(record, info, use == kNoColors ? ColorUse::kColors : static_cast<ColorUse>(use));
  if (!parts || (parts->is_for_printers && parts_at != kPartsOfDibs)) return false;
  const ByteCount image = parts->row == ByteCount(0) ? parts->image : std::min(parts->image, parts->row * rows);
  // Some players join both parts, so colours may reach into the rows.
  return record.has(info, parts->info) && parts->info <= ByteCount(info_bytes) + bits_bytes &&
         image <= ByteCount(bits_bytes);
}

constexpr ByteCount kAllRows = ByteCount(UINT32_MAX);

// An offset of 0 means none.
bool has_dib_or_none(const Record& record, size_t parts_at, size_t use_at) {
  return number(record, parts_at) == 0 || has_dib(record, parts_at, use_at, kAllRows);
}

template <size_t kParts, size_t kUse>
bool has_picture(const Record& record, uint32_t) {
  return has_dib(record, kParts, kUse, kAllRows);
}

bool has_optional_picture(const Record& record, uint32_t) { return has_dib_or_none(record, 84, 80); }

bool has_masked_picture(const Record& record, uint32_t) {
  return has_dib(record, 84, 80, kAllRows) && has_dib_or_none(record, 112, 108);
}

bool has_skewed_picture(const Record& record, uint32_t) {
  return has_dib(record, 96, 92, kAllRows) && has_dib_or_none(record, 124, 120);
}

bool has_rows_of_picture(const Record& record, uint32_t) { return has_dib(record, kPartsOfDibs, 64, number(record, 72)); }

bool makes_pattern(const Record& record, uint32_t objects) {
  return names_object<8>(record, objects) && has_dib(record, 16, 12, kAllRows);
}

// ---- Data ----

template <size_t kCount>
bool has_data(const Record& record, uint32_t) {
  return record.has(kCount + 4, number(record, kCount));
}

template <size_t kFirst>
bool has_two_data(const Record& record, uint32_t) {
  return record.has(kFirst + 8, ByteCount(number(record, kFirst)) + number(record, kFirst + 4));
}

// The shortest length of each type, in bytes, and further checks. Types that are not listed draw nothing.
constexpr struct Type {
  uint32_t number;
  uint16_t bytes;
  Check check;
} kTypes[] = {
    {1, 88, anything},                        // Header
    {2, 28, has_points<8>},                   // PolyBezier
    {3, 28, has_points<8>},                   // Polygon
    {4, 28, has_points<8>},                   // Polyline
    {5, 28, has_points<8>},                   // PolyBezierTo
    {6, 28, has_points<8>},                   // PolylineTo
    {7, 32, has_point_lists<8>},              // PolyPolyline
    {8, 32, has_point_lists<8>},              // PolyPolygon
    {9, 16, anything},                        // SetWindowExtEx
    {10, 16, anything},                       // SetWindowOrgEx
    {11, 16, anything},                       // SetViewportExtEx
    {12, 16, anything},                       // SetViewportOrgEx
    {13, 16, anything},                       // SetBrushOrgEx
    {15, 20, anything},                       // SetPixelV
    {16, 12, anything},                       // SetMapperFlags
    {17, 12, anything},                       // SetMapMode
    {18, 12, anything},                       // SetBkMode
    {19, 12, anything},                       // SetPolyFillMode
    {20, 12, anything},                       // SetROP2
    {21, 12, anything},                       // SetStretchBltMode
    {22, 12, anything},                       // SetTextAlign
    {23, 32, anything},                       // SetColorAdjustment
    {24, 12, anything},                       // SetTextColor
    {25, 12, anything},                       // SetBkColor
    {26, 16, anything},                       // OffsetClipRgn
    {27, 16, anything},                       // MoveToEx
    {29, 24, anything},                       // ExcludeClipRect
    {30, 24, anything},                       // IntersectClipRect
    {31, 24, anything},                       // ScaleViewportExtEx
    {32, 24, anything},                       // ScaleWindowExtEx
    {34, 12, anything},                       // RestoreDC
    {35, 32, anything},                       // SetWorldTransform
    {36, 36, anything},                       // ModifyWorldTransform
    {37, 12, names_object_or_stock<8>},       // SelectObject
    {38, 28, names_object<8>},                // CreatePen
    {39, 24, makes_brush},                    // CreateBrushIndirect
    {40, 12, names_object<8>},                // DeleteObject
    {41, 28, anything},                       // AngleArc
    {42, 24, anything},                       // Ellipse
    {43, 24, anything},                       // Rectangle
    {44, 32, anything},                       // RoundRect
    {45, 40, anything},                       // Arc
    {46, 40, anything},                       // Chord
    {47, 40, anything},                       // Pie
    {48, 12, names_object_or_stock<8>},       // SelectPalette
    {49, 16, makes_palette},                  // CreatePalette
    {50, 20, sets_palette_entries},           // SetPaletteEntries
    {51, 16, names_object<8>},                // ResizePalette
    {53, 24, anything},                       // ExtFloodFill
    {54, 16, anything},                       // LineTo
    {55, 40, anything},                       // ArcTo
    {56, 28, has_typed_points<8>},            // PolyDraw
    {57, 12, anything},                       // SetArcDirection
    {58, 12, anything},                       // SetMiterLimit
    {62, 24, anything},                       // FillPath
    {63, 24, anything},                       // StrokeAndFillPath
    {64, 24, anything},                       // StrokePath
    {67, 12, anything},                       // SelectClipPath
    {70, 12, has_data<8>},                    // GdiComment
    {71, 32, has_region_and_brush<32>},       // FillRgn
    {72, 40, has_region_and_brush<40>},       // FrameRgn
    {73, 28, has_painted_region<28>},         // InvertRgn
    {74, 28, has_painted_region<28>},         // PaintRgn
    {75, 16, has_clip_region},                // ExtSelectClipRgn
    {76, 100, has_optional_picture},          // BitBlt
    {77, 108, has_optional_picture},          // StretchBlt
    {78, 128, has_masked_picture},            // MaskBlt
    {79, 140, has_skewed_picture},            // PlgBlt
    {80, 76, has_rows_of_picture},            // SetDIBitsToDevice
    {81, 80, has_picture<kPartsOfDibs, 64>},  // StretchDIBits
    {82, 104, names_object<8>},               // ExtCreateFontIndirectW
    {83, 76, has_one_text<1>},                // ExtTextOutA
    {84, 76, has_one_text<2>},                // ExtTextOutW
    {85, 28, has_points<4>},                  // PolyBezier16
    {86, 28, has_points<4>},                  // Polygon16
    {87, 28, has_points<4>},                  // Polyline16
    {88, 28, has_points<4>},                  // PolyBezierTo16
    {89, 28, has_points<4>},                  // PolylineTo16
    {90, 32, has_point_lists<4>},             // PolyPolyline16
    {91, 32, has_point_lists<4>},             // PolyPolygon16
    {92, 28, has_typed_points<4>},            // PolyDraw16
    {93, 32, makes_pattern},                  // CreateMonoBrush
    {94, 32, makes_pattern},                  // CreateDIBPatternBrushPt
    {95, 52, makes_pen},                      // ExtCreatePen
    {96, 40, has_texts<1>},                   // PolyTextOutA
    {97, 40, has_texts<2>},                   // PolyTextOutW
    {98, 12, anything},                       // SetICMMode
    {99, 340, names_object<8>},               // CreateColorSpace
    {100, 12, names_object_or_stock<8>},      // SetColorSpace
    {101, 12, names_object<8>},               // DeleteColorSpace
    {104, 48, anything},                      // PixelFormat
    {105, 16, has_data<12>},                  // DrawEscape
    {106, 16, has_data<12>},                  // ExtEscape
    {108, 36, has_small_text},                // SmallTextOut
    {110, 20, has_two_data<12>},              // NamedEscape
    {111, 24, names_object_or_stock<8>},      // ColorCorrectPalette
    {112, 20, has_two_data<12>},              // SetICMProfileA
    {113, 20, has_two_data<12>},              // SetICMProfileW
    {114, 108, has_picture<84, 80>},          // AlphaBlend
    {115, 12, anything},                      // SetLayout
    {116, 108, has_picture<84, 80>},          // TransparentBlt
    {118, 36, has_gradient},                  // GradientFill
    {120, 16, anything},                      // SetTextJustification
    {121, 24, has_two_data<16>},              // ColorMatchToTargetW
    {122, 608, names_object<8>},              // CreateColorSpaceW
};
static_assert(std::ranges::is_sorted(kTypes, {}, &Type::number));

bool agrees_with_its_size(const Record& record, uint32_t objects) {
  const uint32_t type_number = number(record, 0);
  const Type* type = std::ranges::lower_bound(kTypes, type_number, {}, &Type::number);
  if (type == std::end(kTypes) || type->number != type_number) return true;
  return record.size() >= type->bytes && type->check(record, objects);
}

std::span<const uint8_t> first_record(std::span<const uint8_t> records) {
  const uint32_t length = number(Record(records), 4);
  if (length < kShortestRecord || length % 4 != 0 || length > records.size()) return {};
  return records.first(length);
}

}  // namespace

std::span<uint8_t> playable_enhanced_metafile(std::span<uint8_t> metafile) {
  if (metafile.size() < kEnhancedHeaderBytes) return {};
  EnhancedHeader header;
  std::memcpy(&header, metafile.data(), sizeof header);
  if (header.type != kHeader || header.objects == 0) return {};
  size_t end = 0;
  while (end < metafile.size()) {
    const auto record = first_record(metafile.subspan(end));
    if (record.empty() || !agrees_with_its_size(Record(record), header.objects)) return {};
    end += record.size();
    if (number(Record(record), 0) == kEnd) break;
  }
  header.bytes = static_cast<uint32_t>(end);
  // Not every player distinguishes stock objects when it fills a region: their numbers get room too.
  header.objects = std::max(header.objects, static_cast<uint16_t>(kStockObjects));
  std::memcpy(metafile.data(), &header, sizeof header);
  return metafile.first(end);
}

}  // namespace vorel::metafile
