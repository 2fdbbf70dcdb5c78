// The dialog "PRINTPAGE": a printer and the options of the thread's job.
#pragma once

#include "platform/win32.h"

namespace vorel::print {

// True if the message is handled. The dialog ends with a context of the chosen printer, or with 0.
bool follow_page_dialog(HWND dialog, UINT message, WPARAM command);

}  // namespace vorel::print
