#include "metafile/record.h"

#include <algorithm>
#include <cstdlib>

#include "core/header.h"

namespace vorel::metafile {
namespace {

constexpr uint32_t kMaskBytes = 12;
constexpr uint32_t kIndexBytes = 2;

// Compressions in formats of their own, without a depth.
constexpr Compression kJpeg{4}, kPng{5};
constexpr bool is_for_printers(Compression compression) { return compression == kJpeg || compression == kPng; }

// The header at an offset; an older one is converted to the newer kind.
std::optional<DibHeader> header_at(const Record& record, size_t offset) {
  DibHeader header;
  header.size = record.at<uint32_t>(offset);
  if (!record.has(offset, header.size)) return std::nullopt;
  if (header.size == kCoreHeaderBytes) {
    header.width = record.at<uint16_t>(offset + 4);
    header.height = record.at<uint16_t>(offset + 6);
    header.planes = record.at<uint16_t>(offset + 8);
    header.depth = record.at<uint16_t>(offset + 10);
    return header;
  }
  if (header.size < kHeaderBytes) return std::nullopt;
  header.width = record.at<int32_t>(offset + 4);
  header.height = record.at<int32_t>(offset + 8);
  header.planes = record.at<uint16_t>(offset + 12);
  header.depth = record.at<uint16_t>(offset + 14);
  header.compression = static_cast<Compression>(record.at<uint32_t>(offset + 16));
  header.image_bytes = record.at<uint32_t>(offset + 20);
  header.colors_used = record.at<uint32_t>(offset + 32);
  return header;
}

bool is_known(const DibHeader& header) {
  constexpr uint16_t kDepths[] = {1, 4, 8, 16, 24, 32};
  if (header.width < 0 || header.planes != 1 || header.compression > kPng) return false;
  return is_for_printers(header.compression) || std::ranges::find(kDepths, header.depth) != std::end(kDepths);
}

}  // namespace

std::optional<DibParts> dib_parts(const Record& record, size_t offset, ColorUse use) {
  const auto header = header_at(record, offset);
  if (!header || !is_known(*header)) return std::nullopt;
  const bool has_masks = header->compression == Compression::kBitFields;
  const bool is_packed = header->compression != Compression::kNone && !has_masks;
  const uint32_t colors = header->colors_used != 0 ? header->colors_used : implied_colors(header->depth);
  const size_t color_bytes = header->size == kCoreHeaderBytes ? sizeof(RgbTriple) : sizeof(Rgb);

  DibParts parts;
  parts.info = std::max<uint32_t>(header->size, has_masks ? kHeaderBytes + kMaskBytes : 0);
  parts.info = parts.info + ByteCount(colors) * (use == ColorUse::kIndices ? kIndexBytes : color_bytes);
  parts.row = is_packed ? ByteCount(0) : row_stride(header->depth, header->width);
  parts.image =
      is_packed ? ByteCount(header->image_bytes) : parts.row * static_cast<uint64_t>(std::abs(int64_t{header->height}));
  parts.is_for_printers = is_for_printers(header->compression);
  return parts;
}

}  // namespace vorel::metafile
