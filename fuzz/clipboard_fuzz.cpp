// Whatever comes as a clipboard file, as far as it is read before anything is drawn.
#include "calls.h"
#include "formats/clipboard_directory.h"

using namespace vorel;
using namespace vorel::formats;
using namespace vorel::metafile;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr Resolution kScreen{96, 120};
  const std::span<const uint8_t> bytes(data, size);
  if (!read_clipboard_header(bytes) || size < sizeof(ClipboardFileHeader)) return 0;
  using enum ClipboardFormat;
  for (const ClipboardFormat format : {kText, kBitmap, kMetafilePicture, kDib}) {
    const auto entry = find_entry(bytes.subspan(sizeof(ClipboardFileHeader)), format);
    if (!entry) continue;
    fuzz::require(entry->format == static_cast<uint16_t>(format));
    if (!lies_within(*entry, size) || format != kMetafilePicture || entry->bytes < kPictureHeaderBytes) continue;
    const PictureLengths picture = read_picture_header(bytes.subspan(entry->offset).first<kPictureHeaderBytes>());
    const Size in_file = pixels_in_file(picture, kScreen), on_clipboard = pixels_on_clipboard(picture, 96, {640, 480});
    fuzz::require(in_file.width > 0 && in_file.height > 0 && on_clipboard.width > 0 && on_clipboard.height > 0);
  }
  return 0;
}
