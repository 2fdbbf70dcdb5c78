// The contents of a clipboard file, as its directory lists them.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "frame/error.h"
#include "metafile/units.h"

namespace vorel::formats {

inline constexpr uint16_t kClipboardFileId = 50'000;

// The formats that can be read, by the system's numbers.
enum class ClipboardFormat : uint16_t { kText = 1, kBitmap = 2, kMetafilePicture = 3, kDib = 8 };

inline bool is_read(ClipboardFormat format) {
  using enum ClipboardFormat;
  return format == kText || format == kBitmap || format == kMetafilePicture || format == kDib;
}

// The headers of a file follow each other without a gap, at odd offsets too.
#pragma pack(push, 1)
struct ClipboardFileHeader {
  uint16_t id = kClipboardFileId;
  uint16_t entries = 0;
};

// Where the data of one format lies.
struct ClipboardEntry {
  uint16_t format = 0;
  uint32_t bytes = 0, offset = 0;
  std::array<char, 79> name{};
};

// The start of a file with only a DIB.
struct ClipboardDibStart {
  ClipboardFileHeader header;
  ClipboardEntry entry;
};
#pragma pack(pop)
static_assert(sizeof(ClipboardFileHeader) == 4);
static_assert(sizeof(ClipboardEntry) == 89);
static_assert(sizeof(ClipboardDibStart) == 93);

// The number of entries in a file that begins with these bytes.
Result<uint16_t> read_clipboard_header(std::span<const uint8_t> start);

// The first entry of a format among the complete ones of a directory.
Result<ClipboardEntry> find_entry(std::span<const uint8_t> directory, ClipboardFormat format);

// Whether the data of an entry lies within a file.
inline bool lies_within(const ClipboardEntry& entry, uint64_t file_bytes) {
  return uint64_t{entry.offset} + entry.bytes <= file_bytes;
}

// Size of the header in front of the metafile in a metafile picture.
inline constexpr size_t kPictureHeaderBytes = 16;
metafile::PictureLengths read_picture_header(std::span<const uint8_t, kPictureHeaderBytes> header);

// The headers in front of a DIB of this size.
ClipboardDibStart clipboard_start_for_dib(uint32_t bytes);

}  // namespace vorel::formats
