// Metafiles as files: loaded as bitmaps, and saved from pictures.
#pragma once

#include "metafile/device_metafile.h"
#include "platform/memory.h"

namespace vorel::metafile {

// A file that cannot be opened is an unreported failure.
Result<OwnedBitmap> load_metafile(const char* path);

// Both write what they can and report nothing. Without a picture no file is made. An enhanced metafile is made for the
// screen if it comes from a DIB, and for no device if it comes from a bitmap.
void save_dib_in_metafile(const char* path, HGLOBAL dib, MetafileKind kind);
void save_bitmap_in_metafile(const char* path, HBITMAP bitmap, MetafileKind kind);

}  // namespace vorel::metafile
