// The parts of the self-test.
#pragma once

#include <string>

#include "random_call.h"
#include "selftest/report.h"

namespace vorel::selftest {

// The system, its display, the library's file and what the codec modules are built on.
void describe_machine(Report& report, const Library& library);
// Every name and ordinal.
void check_exports(Report& report, const Library& library);
// Random calls against digests of their results that every build gives.
void check_arithmetic(Report& report, const Library& library);
// Pictures through files of every format.
void check_formats(Report& report, const Library& library);
// Pictures through device bitmaps and palettes.
void check_devices(Report& report, const Library& library);
// A picture in a window, scrolled.
void check_window(Report& report, const Library& library);
// A metafile picture on the clipboard. The text there is put back.
void check_clipboard(Report& report, const Library& library);
// The printers; with `prints` a page on the default printer.
void check_printers(Report& report, const Library& library, bool prints);

// A 24-bit picture in which no two neighbours are equal.
HGLOBAL test_picture(int width, int height);
// The colour of a pixel of a 24-bit DIB, counted from the top.
COLORREF pixel_of(HGLOBAL dib, int x, int y);

}  // namespace vorel::selftest
