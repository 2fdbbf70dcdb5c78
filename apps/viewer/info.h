// What a file and its picture are.
#pragma once

#include "viewer/document.h"
#include "viewer/system.h"

namespace vorel::viewer {

// A dialog with facts and a histogram, of the page on view.
void show_facts(HWND owner, const Document& document);

}  // namespace vorel::viewer
