// The metafile picture on the clipboard.
#pragma once

#include "metafile/device_metafile.h"

namespace vorel::metafile {

// Draws it at the resolution of a window, which opens the clipboard. Message boxes report a clipboard that cannot be opened
// and a picture that cannot be drawn.
Result<OwnedBitmap> draw_clipboard_picture(HWND owner);

}  // namespace vorel::metafile
