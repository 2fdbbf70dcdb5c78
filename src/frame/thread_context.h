// What the library keeps for each thread, and when that memory comes and goes.
#pragma once

#include <cstdint>

#include <vorel32.h>

#include "frame/error.h"

namespace vorel {

// Element 0 counts the scale steps (1 to 10) that follow it, strictly increasing, the first one equal to the base scale.
inline constexpr int kScaleTableWords = 11;

inline constexpr int kJobNameBytes = 256;

// A print job, from its preparation to its end. The system's handles are kept as the plain pointers they are.
struct PrintJob {
  void* dc;             // what pages are drawn on
  void* printer_dc;     // the printer's own; `dc` is another one if pages are drawn in memory
  void* deleted_dc;     // one of the caller's that is gone, so that it is not deleted again
  void* cancel_dialog;  // its window
  int32_t owns_printer_dc;
  int32_t has_abort_procedure;
  int32_t is_cancelled;
  int32_t spooler_code;  // the last one that the abort procedure got
  int32_t document_is_open;
  int32_t page_is_open;
  int32_t page_is_continued;
  int32_t page_count;
  ImgPrintOptions options;
  float x_dots_per_inch, y_dots_per_inch;
  float page_width, page_height;  // the printable page, in inches
  float x_scale, y_scale;         // of the page that was printed last
  int32_t planes, bits_per_pixel, is_monochrome;
  char document[kJobNameBytes];
  char printer[kJobNameBytes];  // chosen in the dialog
};

// How a printer was set up, for the next job on it.
struct PrinterSettings {
  char printer[kJobNameBytes];
  void* device_mode;  // a global block that is its own address, freed with the thread; null if there is none
};

struct ImgThreadContext {
  int32_t error_code;
  int32_t first_scale_steps[kScaleTableWords];
  int32_t second_scale_steps[kScaleTableWords];
  int32_t base_scale;                // the scale that stands for 100 % in both tables
  int32_t setting;                   // starts at 4, beside the page layout settings; nothing reads it
  int32_t histogram_bytes;           // of a histogram block, once one was allocated
  int32_t histogram_x, histogram_y;  // the square that was last counted
  int32_t table_length;              // of a lookup table, once one was allocated
  int32_t is_resizing;               // 1 while a display follows its window to a new size
  PrintJob print_job;
  PrinterSettings printer_settings;
  void* shown_printers;  // those that an open dialog shows
};

// The calling thread's context, made on its first use. A thread that cannot have one is ended: every operation reports
// through the context, so there is nothing else it could do.
ImgThreadContext& thread_context();

// Stores why an operation of the calling thread failed. kUnreported leaves the code as it is.
void set_thread_error(Error error);

// The notices a module gets from the system; the values are the system's.
enum class ModuleNotice : uint32_t { kProcessDetach = 0, kProcessAttach = 1, kThreadAttach = 2, kThreadDetach = 3 };

// Follows a notice and returns whether it is accepted; unknown ones are not.
//   repeats_notices  the system is of the family (Windows 9x) that attaches and detaches a process twice: the second notice
//                    of each kind is refused
bool follow_module_notice(ModuleNotice notice, bool repeats_notices);

}  // namespace vorel
