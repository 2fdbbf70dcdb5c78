// Text drawn black on white, in the system's font.
#pragma once

#include "frame/error.h"
#include "platform/windows/gdi.h"

namespace vorel::formats {

enum class TextCodePage { kOem, kAnsi };

// The thread's code is 0 once the text is read, even if it cannot be drawn.
Result<OwnedBitmap> load_text(const char* path, TextCodePage code_page);

// Draws the text in a block. The last byte of the block becomes 0, as does the first character beyond the highest possible
// bitmap; a message box reports the cut.
Result<OwnedBitmap> draw_text(HGLOBAL text);

}  // namespace vorel::formats
