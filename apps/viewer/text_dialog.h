// A dialog with a text to read, to scroll and to copy from.
#pragma once

#include <string>

#include "viewer/system.h"

namespace vorel::viewer {

// Lines end with a carriage return and a line feed. Tabs make two columns.
void show_text(HWND owner, const std::wstring& title, const std::wstring& text);

}  // namespace vorel::viewer
