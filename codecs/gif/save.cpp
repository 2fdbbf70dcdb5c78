// SUNE: saves a picture as a GIF file of one image.
#include <algorithm>
#include <bit>
#include <gif_lib.h>
#include <limits>
#include <memory>
#include <type_traits>

#include "common/dib.h"
#include "common/entry.h"
#include "common/file.h"
#include "gif/indexed.h"
#include "gif/interlace.h"

namespace codec::gif {
namespace {

struct FreeMap {
  void operator()(ColorMapObject* map) const { GifFreeMapObject(map); }
};
using ColorMap = std::unique_ptr<ColorMapObject, FreeMap>;

// The number of colours in a table is a power of two.
ColorMap color_map(const Colors& colors) {
  const size_t count = std::bit_ceil(std::max(colors.size(), size_t{2}));
  std::vector<GifColorType> table(count);
  for (size_t i = 0; i < colors.size(); ++i) table[i] = {colors[i].red, colors[i].green, colors[i].blue};
  ColorMap map(GifMakeMapObject(static_cast<int>(count), table.data()));
  if (!map) fail(IMG_E_MEMORY);
  return map;
}

int write_bytes(GifFileType* gif, const GifByteType* bytes, int count) {
  auto* file = static_cast<std::FILE*>(gif->UserData);
  return static_cast<int>(std::fwrite(bytes, 1, static_cast<size_t>(count), file));
}

struct Close {
  void operator()(GifFileType* gif) const { EGifCloseFile(gif, nullptr); }
};

// Encodes one image that fills its screen. The file is complete at the end of the scope.
class Encoder {
 public:
  explicit Encoder(const OutputFile& file) : gif_(EGifOpen(file.get(), write_bytes, nullptr)) {
    if (!gif_) fail(IMG_E_MEMORY);
  }

  void begin(int width, int height, bool is_interlaced, const ColorMapObject& colors) const {
    constexpr int kComponentBits = 8;
    check(EGifPutScreenDesc(gif_.get(), width, height, kComponentBits, 0, &colors));
    check(EGifPutImageDesc(gif_.get(), 0, 0, width, height, is_interlaced, nullptr));
  }

  // giflib clears bits that exceed the table in the row itself.
  void write_row(std::span<uint8_t> indices) const {
    check(EGifPutLine(gif_.get(), indices.data(), static_cast<int>(indices.size())));
  }

 private:
  static void check(int result) {
    if (result == GIF_ERROR) fail(IMG_E_FILE_IO);
  }

  std::unique_ptr<GifFileType, Close> gif_;
};

BOOL save(const char* path, HGLOBAL handle, bool is_interlaced) {
  const SourceDib dib(handle);
  constexpr int kMostPixels = std::numeric_limits<uint16_t>::max();
  if (dib.width() > kMostPixels || dib.height() > kMostPixels) fail(IMG_E_DIB_SIZE);
  Indexed picture;
  if (dib.depth() == 24) picture = indexed(dib);
  const ColorMap map = color_map(dib.depth() == 24 ? picture.colors : dib.colors());
  std::vector<uint8_t> buffer(static_cast<size_t>(dib.width()));

  OutputFile file(path);
  {
    const Encoder encoder(file);
    encoder.begin(dib.width(), dib.height(), is_interlaced, *map);
    for (int i = 0; i < dib.height(); ++i) {
      const int y = is_interlaced ? interlaced_row(i, dib.height()) : i;
      if (dib.depth() == 24) {
        encoder.write_row(std::span(picture.indices).subspan(static_cast<size_t>(y) * buffer.size(), buffer.size()));
        continue;
      }
      unpack_indices(dib.row_from_top(y), dib.depth(), buffer);
      encoder.write_row(buffer);
    }
  }
  file.complete();
  return TRUE;
}

}  // namespace
}  // namespace codec::gif

CODEC_ENTRY BOOL VORELCALL SaveDIBInGIFFormat(LPCSTR path, HGLOBAL dib, int interlaced, int* status) {
  return codec::at_entry(status, [&] { return codec::gif::save(path, dib, interlaced != 0); });
}

static_assert(std::is_same_v<decltype(&SaveDIBInGIFFormat), ImgSaveGif>);
