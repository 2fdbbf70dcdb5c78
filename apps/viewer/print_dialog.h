// The dialog that asks how and where to print.
#pragma once

#include <vector>

#include "viewer/printing.h"

namespace vorel::viewer {

// Returns the pages to print; none if it was cancelled. The settings are what it begins with, and what was chosen. Throws Failure
// where no printer is.
std::vector<int> ask_how_to_print(HWND owner, const DocumentPages& pages, PrintSettings& settings);

}  // namespace vorel::viewer
