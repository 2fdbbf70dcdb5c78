// Windows bitmap files: a file header, optional when reading, and the packed DIB as it lies in memory.
#pragma once

#include "dib/packed_dib.h"
#include "frame/error.h"
#include "platform/file.h"

namespace vorel {

// Reads header and colour table at the file's position into a DIB without pixels. The position is then at the pixel data.
Result<OwnedDib> read_dib_info(FileRef file);

Result<OwnedDib> load_dib(const char* path);

// Writes a whole DIB block behind a file header. A write counts as failed only if it moves nothing.
Result<bool> save_dib(const char* path, HGLOBAL dib);

}  // namespace vorel
