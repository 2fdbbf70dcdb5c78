// Metafiles, text files and clipboard files.
#include <vorel32.h>

#include "dib/device_bitmap.h"
#include "exports/boundary.h"
#include "formats/clipboard_file.h"
#include "formats/device_text.h"
#include "metafile/clipboard_picture.h"
#include "metafile/metafile_file.h"

using namespace vorel;
using formats::TextCodePage, metafile::MetafileKind;

namespace {

// For saves that do not report failures.
template <class Save>
BOOL saved(Save save) {
  return at_boundary(
      ThreadCode{},
      [&]() -> Result<BOOL> {
        save();
        return TRUE;
      },
      TRUE);
}

}  // namespace

extern "C" {

HBITMAP VORELCALL DrawMetaFileIntoBitmap(HANDLE metafile, int width, int height, BOOL enhanced) {
  const MetafileKind kind = enhanced ? MetafileKind::kEnhanced : MetafileKind::kWindows;
  return object_for_caller([&] { return metafile::draw_metafile(metafile, {width, height}, kind); });
}

HBITMAP VORELCALL LoadMetaFileIntoBitmap(LPCSTR path) {
  return object_for_caller([&] { return metafile::load_metafile(path); });
}

BOOL VORELCALL SaveDIBIntoMetaFile(LPCSTR path, HGLOBAL dib) {
  return saved([&] { metafile::save_dib_in_metafile(path, dib, MetafileKind::kWindows); });
}
BOOL VORELCALL SaveDIBIntoEnhMetaFile(LPCSTR path, HGLOBAL dib) {
  return saved([&] { metafile::save_dib_in_metafile(path, dib, MetafileKind::kEnhanced); });
}
BOOL VORELCALL SaveBitmapIntoMetaFile(LPCSTR path, HBITMAP bitmap) {
  return saved([&] { metafile::save_bitmap_in_metafile(path, bitmap, MetafileKind::kWindows); });
}
BOOL VORELCALL SaveBitmapIntoEnhMetaFile(LPCSTR path, HBITMAP bitmap) {
  return saved([&] { metafile::save_bitmap_in_metafile(path, bitmap, MetafileKind::kEnhanced); });
}

HBITMAP VORELCALL PlaceMetaFileIntoBMPFromCLP(HWND owner) {
  return object_for_caller([&] { return metafile::draw_clipboard_picture(owner); });
}

HGLOBAL VORELCALL PlaceMetaFileIntoDIBFromCLP(HWND owner) {
  return at_boundary(ThreadCode{}, [&]() -> Result<HGLOBAL> {
    const OwnedBitmap bitmap = VOREL_TRY(metafile::draw_clipboard_picture(owner));
    return released(dib_in_screen_colors(bitmap.get()));
  });
}

HBITMAP VORELCALL LoadASCIIFile(LPCSTR path, BOOL ansi) {
  return object_for_caller([&] { return formats::load_text(path, ansi ? TextCodePage::kAnsi : TextCodePage::kOem); });
}

HBITMAP VORELCALL LoadASCIIIntoBitmap(HGLOBAL text) {
  return object_for_caller([&] { return formats::draw_text(text); });
}

HANDLE VORELCALL LoadClipboardFormat(LPCSTR path, WORD format) {
  return at_boundary(ThreadCode{},
                     [&] { return formats::load_clipboard_format(path, static_cast<formats::ClipboardFormat>(format)); });
}

BOOL VORELCALL SaveClipboardFormat(LPCSTR path, HBITMAP bitmap) {
  return at_boundary(ThreadCode{}, [&] { return formats::save_clipboard_file(path, bitmap); });
}

}  // extern "C"
