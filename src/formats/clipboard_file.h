// Clipboard files: loading one picture, or saving one device bitmap.
#pragma once

#include "formats/clipboard_directory.h"
#include "frame/error.h"
#include "platform/windows/gdi.h"

namespace vorel::formats {

// A bitmap, or a memory block for ClipboardFormat::kBitmap. A damaged metafile is an unreported failure.
Result<HANDLE> load_clipboard_format(const char* path, ClipboardFormat format);

Result<bool> save_clipboard_file(const char* path, HBITMAP bitmap);

}  // namespace vorel::formats
