// A printer driver's own set-up dialog.
#pragma once

#include "platform/win32.h"
#include "print/printer_names.h"

namespace vorel::print {

enum class DriverSetup {
  kDone,  // or cancelled by the user
  kNoDriver,
  kInvalidDriver,
  kNoMemory,
};

// Shows the dialog for one printer and keeps its settings for the thread's next job on it. The driver's own entry points are
// tried first (ExtDeviceMode, then DeviceMode, which reports nothing). Current drivers have neither, and only the spooler
// finds them: it is asked next.
DriverSetup set_up_driver(HWND owner, PrinterDevice device);

}  // namespace vorel::print
