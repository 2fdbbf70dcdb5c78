#include "formats/device_formats.h"

#include "dib/device_bitmap.h"
#include "formats/clipboard_file.h"
#include "metafile/metafile_file.h"

namespace vorel::formats {
namespace {

// Holds the active window's context meanwhile.
Result<BOOL> save_metafile(const SaveRequest& request, metafile::MetafileKind kind) {
  const OwnedBitmap bitmap = VOREL_TRY(bitmap_of(request.dib));
  const WindowDc held(GetActiveWindow());
  metafile::save_bitmap_in_metafile(request.path, bitmap.get(), kind);
  return TRUE;
}

}  // namespace

Result<HGLOBAL> load_metafile_dib(const LoadRequest& request) {
  const OwnedBitmap bitmap = VOREL_TRY(metafile::load_metafile(request.path));
  return released(dib_in_screen_colors(bitmap.get()));
}

Result<HGLOBAL> load_clipboard_dib(const LoadRequest& request) {
  const OwnedBitmap bitmap(static_cast<HBITMAP>(VOREL_TRY(load_clipboard_format(request.path, ClipboardFormat::kDib))));
  return released(dib_in_screen_colors(bitmap.get()));
}

Result<BOOL> save_windows_metafile(const SaveRequest& request) {
  return save_metafile(request, metafile::MetafileKind::kWindows);
}
Result<BOOL> save_enhanced_metafile(const SaveRequest& request) {
  return save_metafile(request, metafile::MetafileKind::kEnhanced);
}

Result<BOOL> save_clipboard_dib(const SaveRequest& request) {
  const OwnedBitmap bitmap = VOREL_TRY(bitmap_of(request.dib));
  return BOOL{VOREL_TRY(save_clipboard_file(request.path, bitmap.get()))};
}

}  // namespace vorel::formats
