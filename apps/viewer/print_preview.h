// The window that shows pages as they will be printed.
#pragma once

#include "viewer/printing.h"

namespace vorel::viewer {

enum class PreviewEnd { kClosed, kPrint };

// Stays in front of its owner until it is closed, or printing is asked for. The layout that was chosen stays in the settings. Throws
// Failure where no printer is, or where it cannot be reached.
PreviewEnd show_preview(HWND owner, DocumentPages& pages, PrintSettings& settings);

}  // namespace vorel::viewer
