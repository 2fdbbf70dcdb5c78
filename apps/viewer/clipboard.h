// Pictures on the clipboard.
#pragma once

#include "common/dib.h"

namespace vorel::viewer {

bool can_paste();

// Both throw Failure. What is taken is normalised.
Dib paste_picture(HWND owner);
void copy_picture(HWND owner, const Dib& dib);

}  // namespace vorel::viewer
