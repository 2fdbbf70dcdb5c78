#include "formats/device_formats.h"

#include "dib/device_bitmap.h"
#include "formats/clipboard_file.h"
#include "metafile/metafile_file.h"

namespace vorel::formats {
namespace {

Result<HGLOBAL> dib_of_loaded(Result<OwnedBitmap> bitmap) {
  if (!bitmap) return bitmap.error();
  return released(dib_in_screen_colors(bitmap->get()));
}

// Holds the active window's context meanwhile.
Result<BOOL> save_metafile(const SaveRequest& request, metafile::MetafileKind kind) {
  const auto bitmap = bitmap_of(request.dib);
  if (!bitmap) return bitmap.error();
  const WindowDc held(GetActiveWindow());
  metafile::save_bitmap_in_metafile(request.path, bitmap->get(), kind);
  return TRUE;
}

}  // namespace

Result<HGLOBAL> load_metafile_dib(const LoadRequest& request) {
  return dib_of_loaded(metafile::load_metafile(request.path));
}

Result<HGLOBAL> load_clipboard_dib(const LoadRequest& request) {
  const auto bitmap = load_clipboard_format(request.path, ClipboardFormat::kDib);
  if (!bitmap) return bitmap.error();
  return dib_of_loaded(OwnedBitmap(static_cast<HBITMAP>(*bitmap)));
}

Result<BOOL> save_windows_metafile(const SaveRequest& request) {
  return save_metafile(request, metafile::MetafileKind::kWindows);
}
Result<BOOL> save_enhanced_metafile(const SaveRequest& request) {
  return save_metafile(request, metafile::MetafileKind::kEnhanced);
}

Result<BOOL> save_clipboard_dib(const SaveRequest& request) {
  const auto bitmap = bitmap_of(request.dib);
  if (!bitmap) return bitmap.error();
  const auto saved = save_clipboard_file(request.path, bitmap->get());
  if (!saved) return saved.error();
  return BOOL{*saved};
}

}  // namespace vorel::formats
