#include "formats/clipboard_directory.h"

#include <algorithm>
#include <cstring>

namespace vorel::formats {

Result<uint16_t> read_clipboard_header(std::span<const uint8_t> start) {
  ClipboardFileHeader header{.id = 0};
  std::ranges::copy(start.first(std::min(start.size(), sizeof header)), reinterpret_cast<uint8_t*>(&header));
  if (header.id != kClipboardFileId) return Error::kFormat;
  if (header.entries == 0) return Error::kClipboardFormat;
  return uint16_t{header.entries};
}

Result<ClipboardEntry> find_entry(std::span<const uint8_t> directory, ClipboardFormat format) {
  ClipboardEntry entry;
  for (; directory.size() >= sizeof entry; directory = directory.subspan(sizeof entry)) {
    std::memcpy(&entry, directory.data(), sizeof entry);
    if (entry.format == static_cast<uint16_t>(format)) return entry;
  }
  return Error::kClipboardFormat;
}

metafile::PictureLengths read_picture_header(std::span<const uint8_t, kPictureHeaderBytes> header) {
  metafile::PictureLengths lengths;
  std::memcpy(&lengths, header.data(), sizeof lengths);
  return lengths;
}

ClipboardDibStart clipboard_start_for_dib(uint32_t bytes) {
  ClipboardDibStart start;
  start.header.entries = 1;
  start.entry.format = static_cast<uint16_t>(ClipboardFormat::kDib);
  start.entry.bytes = bytes;
  start.entry.offset = sizeof start;
  return start;
}

}  // namespace vorel::formats
