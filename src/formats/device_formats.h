// Formats that are drawn by the system or contain device bitmaps. A build without a windowing system has no handlers for
// them: they fail unreported.
#pragma once

#include "formats/image_file.h"

namespace vorel::formats {

Result<HGLOBAL> load_metafile_dib(const LoadRequest& request);
Result<HGLOBAL> load_clipboard_dib(const LoadRequest& request);

Result<BOOL> save_windows_metafile(const SaveRequest& request);
Result<BOOL> save_enhanced_metafile(const SaveRequest& request);
Result<BOOL> save_clipboard_dib(const SaveRequest& request);

}  // namespace vorel::formats
