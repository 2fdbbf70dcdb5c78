// The metafile picture on the clipboard.
#pragma once

#include "metafile/device_metafile.h"

namespace vorel::metafile {

// Draws it at the resolution of a window, which opens the clipboard. Message boxes tell that the clipboard cannot be opened and
// that the picture cannot be drawn.
Result<OwnedBitmap> draw_clipboard_picture(HWND owner);

}  // namespace vorel::metafile
