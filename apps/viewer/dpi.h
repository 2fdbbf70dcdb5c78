// Sizes for the monitor that a window is on. Systems before per-monitor scaling have one scale for all.
#pragma once

#include "viewer/gdi.h"

namespace vorel::viewer {

// Of a length at the usual 96 dots per inch.
int scaled_for(HWND window, int length);

// The font of status bars and messages.
OwnedFont text_font_for(HWND window);

// The program's own icon, as large as title bars want it.
enum class IconSize { kSmall, kLarge };
HICON icon_for(HWND window, IconSize size);

}  // namespace vorel::viewer
