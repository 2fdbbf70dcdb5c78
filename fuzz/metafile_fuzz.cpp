// Whatever comes as a metafile, a clipboard file or a text, as far as it is read before anything is drawn.
#include <vector>

#include "formats/clipboard_directory.h"
#include "formats/text_image.h"
#include "metafile/header.h"
#include "metafile/records.h"
#include "metafile/units.h"

using namespace vorel;
using namespace vorel::formats;
using namespace vorel::metafile;

namespace {

constexpr Resolution kScreen{96, 120};

void require(bool holds) {
  if (!holds) __builtin_trap();
}

void read_metafile(std::span<const uint8_t> bytes) {
  const auto start = read_metafile_start(bytes.first(std::min(bytes.size(), kMetafileStartBytes)));
  if (!start) return;
  const Size size = pixels_of(start->extent, kScreen);
  require(size.width > 0 && size.height > 0);
  std::vector<uint8_t> copy(bytes.begin() + static_cast<std::ptrdiff_t>(start->offset), bytes.end());
  std::vector<uint8_t> enhanced = copy;
  const auto all = playable_enhanced_metafile(enhanced);
  require(playable_enhanced_metafile(all).size() == all.size());
  copy.resize(copy.size() + kRoomBehindRecords);
  const auto played = playable_windows_metafile(copy);
  std::vector<uint8_t> again(played.begin(), played.end());
  require(playable_windows_metafile(again).size() == played.size());
}

void read_clipboard_file(std::span<const uint8_t> bytes) {
  if (!read_clipboard_header(bytes) || bytes.size() < sizeof(ClipboardFileHeader)) return;
  const auto entry = find_entry(bytes.subspan(sizeof(ClipboardFileHeader)), ClipboardFormat::kMetafilePicture);
  if (!entry || !lies_within(*entry, bytes.size()) || entry->bytes < kPictureHeaderBytes) return;
  const PictureLengths picture = read_picture_header(bytes.subspan(entry->offset).first<kPictureHeaderBytes>());
  const Size in_file = pixels_in_file(picture, kScreen), on_clipboard = pixels_on_clipboard(picture, 96, {640, 480});
  require(in_file.width > 0 && in_file.height > 0 && on_clipboard.width > 0 && on_clipboard.height > 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  read_metafile({data, size});
  read_clipboard_file({data, size});
  measure_text({reinterpret_cast<const char*>(data), size}, {.line_height = 16, .average_width = 7});
  return 0;
}
