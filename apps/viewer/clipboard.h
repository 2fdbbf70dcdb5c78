// Pictures on the clipboard.
#pragma once

#include "common/picture.h"
#include "viewer/system.h"

namespace vorel::viewer {

bool can_paste();

// Both throw Failure. What is taken is in the form that the library works on.
programs::Picture paste_picture(HWND owner);
void copy_picture(HWND owner, const programs::Picture& picture);

}  // namespace vorel::viewer
