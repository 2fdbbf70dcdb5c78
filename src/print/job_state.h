// The print job of each thread, from its preparation to its end.
#pragma once

#include <cstdint>

#include <vorel32.h>

#include "platform/win32.h"

namespace vorel::print {

inline constexpr int kJobNameBytes = 256;

struct PrintJob {
  HDC dc;              // pages are drawn on it
  HDC printer_dc;      // the printer's own; `dc` is another one if pages are drawn in memory
  HDC deleted_dc;      // the caller's context that the job deleted; it is not deleted again
  HWND cancel_dialog;  // null if there is none
  bool owns_printer_dc;
  bool has_abort_procedure;
  bool is_cancelled;
  int spooler_code;  // the last one given to the abort procedure
  bool document_is_open;
  bool page_is_open;
  bool page_is_continued;
  int page_count;
  ImgPrintOptions options;
  float x_dots_per_inch, y_dots_per_inch;
  float page_width, page_height;  // the printable page, in inches
  float x_scale, y_scale;         // of the last page
  int planes, bits_per_pixel;
  bool is_monochrome;
  int32_t setting = 4;  // never read
  char document[kJobNameBytes];
  char printer[kJobNameBytes];  // chosen in the dialog
};

PrintJob& current_job();

}  // namespace vorel::print
