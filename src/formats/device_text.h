// Text drawn black on white, in the system's font.
#pragma once

#include "frame/error.h"
#include "platform/windows/gdi.h"

namespace vorel::formats {

enum class TextCodePage { kOem, kAnsi };

// The thread's code is 0 once the text is read, whether or not it can be drawn.
Result<OwnedBitmap> load_text(const char* path, TextCodePage code_page);

// Draws the text in a block, whose last byte becomes 0, as does the first that no bitmap is high enough for. A message box tells
// of that.
Result<OwnedBitmap> draw_text(HGLOBAL text);

}  // namespace vorel::formats
