// A printer driver's own set-up dialog.
#pragma once

#include "platform/win32.h"
#include "print/printer_names.h"

namespace vorel {

enum class DriverSetup {
  kDone,  // or left by the person
  kNoDriver,
  kInvalidDriver,
  kNoMemory,
};

// Shows the dialog for one printer and keeps what was set for the thread's next job on it. The driver's own entry points come
// first (ExtDeviceMode, then DeviceMode, which tells nothing). Drivers of today have neither, and lie where only the spooler finds
// them: it is asked next.
DriverSetup set_up_driver(HWND owner, PrinterDevice device);

}  // namespace vorel
