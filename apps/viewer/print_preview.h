// The window that shows pages as they will be printed.
#pragma once

#include "viewer/printing.h"

namespace vorel::viewer {

enum class PreviewEnd { kClosed, kPrint };

// Stays in front of its owner until the user closes it or prints. The chosen layout stays in the settings. Throws Failure if
// there is no printer, or if it cannot be reached.
PreviewEnd show_preview(HWND owner, DocumentPages& pages, PrintSettings& settings);

}  // namespace vorel::viewer
