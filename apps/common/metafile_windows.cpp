#include <algorithm>
#include <fstream>
#include <iterator>
#include <vector>

#include "common/platform.h"
#include "common/problem.h"
#include "core/resolution.h"
#include "metafile/device_metafile.h"
#include "metafile/records.h"

namespace vorel::programs {

// The library draws the upper left part of a picture that is too large for a bitmap. The whole is drawn as large as that part.
Picture whole_metafile(const std::filesystem::path& path, Picture loaded) {
  std::ifstream file(path, std::ios::binary);
  std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const auto start =
      metafile::read_metafile_start(std::span(bytes).first(std::min(bytes.size(), metafile::kMetafileStartBytes)));
  if (!start || start->offset > bytes.size()) return loaded;
  const auto screen = metafile::screen_resolution();
  const Size whole = metafile::pixels_of(start->extent, screen), part = {loaded.width(), loaded.height()};
  if (part.width >= whole.width && part.height >= whole.height) return loaded;

  loaded = {};  // there is little memory
  const size_t room = start->is_enhanced ? 0 : metafile::kRoomBehindRecords;
  const size_t count = static_cast<size_t>(std::min<uint64_t>(bytes.size() - start->offset, start->bytes));
  bytes.resize(start->offset + count + room);
  const auto whole_file = metafile::OwnedMetafile::make(
      std::span(bytes).subspan(start->offset),
      start->is_enhanced ? metafile::MetafileKind::kEnhanced : metafile::MetafileKind::kWindows);
  HBITMAP bitmap =
      whole_file ? DrawMetaFileIntoBitmap(whole_file->get(), part.width, part.height, start->is_enhanced) : nullptr;
  const HGLOBAL dib = bitmap == nullptr ? nullptr : ConvertBitmapToDIB(bitmap, nullptr);
  if (bitmap != nullptr) DeleteObject(bitmap);
  Picture picture(dib);
  const auto per_metre = [](int dpi, int drawn, int stated) {
    return static_cast<int>(dpi / kMetresPerInch * drawn / std::max(stated, 1) + 0.5);
  };
  picture.set_resolution(per_metre(screen.x, part.width, whole.width), per_metre(screen.y, part.height, whole.height));
  return picture;
}

}  // namespace vorel::programs
