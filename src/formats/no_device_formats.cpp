#include "formats/device_formats.h"

namespace vorel::formats {

Result<HGLOBAL> load_metafile_dib(const LoadRequest&) { return Error::kUnreported; }
Result<HGLOBAL> load_clipboard_dib(const LoadRequest&) { return Error::kUnreported; }

Result<BOOL> save_windows_metafile(const SaveRequest&) { return Error::kUnreported; }
Result<BOOL> save_enhanced_metafile(const SaveRequest&) { return Error::kUnreported; }
Result<BOOL> save_clipboard_dib(const SaveRequest&) { return Error::kUnreported; }

}  // namespace vorel::formats
