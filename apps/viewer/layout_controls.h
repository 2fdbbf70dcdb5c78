// The controls for a page's layout, which the print dialog and the preview share.
#pragma once

#include "viewer/logic/print_layout.h"
#include "viewer/system.h"

namespace vorel::viewer {

void show_layout(HWND dialog, const PrintLayout& layout);
PrintLayout chosen_layout(HWND dialog);

}  // namespace vorel::viewer
