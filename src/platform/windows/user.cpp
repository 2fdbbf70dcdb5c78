#include "platform/user.h"

#include "platform/win32.h"

namespace vorel {

WaitCursor::WaitCursor() : previous_(SetCursor(LoadCursor(nullptr, IDC_WAIT))) {}

WaitCursor::~WaitCursor() { SetCursor(static_cast<HCURSOR>(previous_)); }

void show_error_message(const char* text, const char* title) { MessageBoxA(nullptr, text, title, MB_ICONEXCLAMATION | MB_OK); }

}  // namespace vorel
