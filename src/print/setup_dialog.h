// The dialog "PRINTERSETUP": the default printer.
#pragma once

#include "platform/win32.h"

namespace vorel {

// What the dialog ends with: 0 when it is cancelled.
int run_setup_dialog(HWND owner, DLGPROC procedure);

// True if the message is dealt with.
bool follow_setup_dialog(HWND dialog, UINT message, WPARAM command);

}  // namespace vorel
