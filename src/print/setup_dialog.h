// The dialog "PRINTERSETUP": the default printer.
#pragma once

#include "platform/win32.h"

namespace vorel::print {

// The dialog's result; 0 if it is cancelled.
int run_setup_dialog(HWND owner, DLGPROC procedure);

// True if the message is handled.
bool follow_setup_dialog(HWND dialog, UINT message, WPARAM command);

}  // namespace vorel::print
