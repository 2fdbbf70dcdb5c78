// SUNE32: loads pages of GIF files.
#include <algorithm>
#include <gif_lib.h>
#include <memory>
#include <type_traits>

#include "common/dib.h"
#include "common/entry.h"
#include "common/file.h"
#include "gif/frames.h"
#include "gif/interlace.h"

namespace codec::gif {
namespace {

// An excerpt of a file for giflib: its head, directly followed by one image.
struct Excerpt {
  std::span<const uint8_t> head, frame;
};

int read_excerpt(GifFileType* gif, GifByteType* buffer, int count) {
  auto& [head, frame] = *static_cast<Excerpt*>(gif->UserData);
  if (head.empty()) std::swap(head, frame);
  const std::span<const uint8_t> bytes = head.first(std::min(head.size(), static_cast<size_t>(count)));
  std::ranges::copy(bytes, buffer);
  head = head.subspan(bytes.size());
  return static_cast<int>(bytes.size());
}

struct Close {
  void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};

// Decodes one image from its first row to its last.
class Decoder {
 public:
  explicit Decoder(const Excerpt& excerpt) : excerpt_(excerpt), gif_(DGifOpen(&excerpt_, read_excerpt, nullptr)) {
    GifRecordType introducer{};
    check(gif_ != nullptr && DGifGetRecordType(gif_.get(), &introducer) == GIF_OK);
    check(DGifGetImageDesc(gif_.get()) == GIF_OK);
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  int height() const { return gif_->Image.Height; }

  // The picture's row that is the file's `i`th.
  int row(int i) const { return gif_->Image.Interlace ? interlaced_row(i, height()) : i; }

  // The image's own colours, or the global ones.
  Colors colors() const {
    const ColorMapObject* map = gif_->Image.ColorMap != nullptr ? gif_->Image.ColorMap : gif_->SColorMap;
    check(map != nullptr);
    Colors colors;
    for (const GifColorType& c : std::span(map->Colors, static_cast<size_t>(map->ColorCount)))
      colors.push_back(color(c.Red, c.Green, c.Blue));
    return colors;
  }

  void read_indices(std::span<uint8_t> indices) const {
    check(DGifGetLine(gif_.get(), indices.data(), static_cast<int>(indices.size())) == GIF_OK);
  }

 private:
  static void check(bool is_fine) {
    if (!is_fine) fail(IMG_E_FORMAT);
  }

  Excerpt excerpt_;
  std::unique_ptr<GifFileType, Close> gif_;
};

// Null if an index does not fit the depth.
HGLOBAL decode(const Excerpt& excerpt, const Frame& frame, int least_depth) {
  const Decoder decoder(excerpt);
  Colors colors = decoder.colors();
  const int depth = std::max(least_depth, depth_for_colors(colors.size()));
  colors.resize(256);
  if (frame.transparent_index >= 0) colors[static_cast<size_t>(frame.transparent_index)] = color(255, 255, 255);

  LoadedDib dib({.width = frame.width,
                 .height = frame.height,
                 .depth = depth,
                 .colors = colors,
                 .has_opacity = frame.transparent_index >= 0});
  std::vector<uint8_t> indices(static_cast<size_t>(frame.width));
  for (int i = 0; i < frame.height; ++i) {
    const std::span<uint8_t> row = dib.row_from_top(decoder.row(i));
    decoder.read_indices(depth == 8 ? row.first(indices.size()) : indices);
    if (depth == 8) continue;
    if (*std::ranges::max_element(indices) >> depth != 0) return nullptr;
    pack_indices(indices, depth, row);
  }
  return dib.release();
}

HGLOBAL load_page(std::span<const uint8_t> file, int page) {
  if (page < 1) fail(IMG_E_PARAMETER);
  FrameFinder finder(file);
  std::optional<Frame> frame;
  for (int i = 0; i < page; ++i) {
    frame = finder.next();
    if (!frame) fail(i == 0 ? IMG_E_FORMAT : IMG_E_PARAMETER);
  }
  check_claim(frame->width, frame->height, 8, file.size());
  const Excerpt excerpt{finder.head(), file.subspan(frame->offset)};
  HGLOBAL dib = decode(excerpt, *frame, 1);
  return dib != nullptr ? dib : decode(excerpt, *frame, 8);
}

int count_pages(std::span<const uint8_t> file) {
  FrameFinder finder(file);
  int count = 0;
  while (finder.next()) ++count;
  if (count == 0) fail(IMG_E_FORMAT);
  return count;
}

}  // namespace
}  // namespace codec::gif

CODEC_ENTRY HGLOBAL VORELCALL LoadGIFIntoDIB(LPCSTR path, int page, int* status) {
  return codec::at_entry(status, [&] { return codec::gif::load_page(codec::InputFile(path).read_all(), page); });
}

CODEC_ENTRY int VORELCALL GetNumberOfImagesInGIFFile(LPCSTR path, int* status) {
  return codec::at_entry(status, [&] { return codec::gif::count_pages(codec::InputFile(path).read_all()); });
}

CODEC_ENTRY LPCSTR VORELCALL NameOfLibraries(void) {
  return "giflib " CODEC_TEXT_OF(GIFLIB_MAJOR) "." CODEC_TEXT_OF(GIFLIB_MINOR) "." CODEC_TEXT_OF(GIFLIB_RELEASE);
}

static_assert(std::is_same_v<decltype(&LoadGIFIntoDIB), ImgLoadPage>);
static_assert(std::is_same_v<decltype(&GetNumberOfImagesInGIFFile), ImgCountPages>);
static_assert(std::is_same_v<decltype(&NameOfLibraries), ImgNameOfLibraries>);
