#include "platform/user.h"

#include "platform/win32.h"

namespace vorel {

void* show_wait_cursor() { return SetCursor(LoadCursor(nullptr, IDC_WAIT)); }

void show_cursor(void* cursor) { SetCursor(static_cast<HCURSOR>(cursor)); }

void show_error_message(const char* text, const char* title) {
  MessageBoxA(nullptr, text, title, MB_ICONEXCLAMATION | MB_OK);
}

void show_task_message(const char* text, const char* title) { MessageBoxA(nullptr, text, title, MB_TASKMODAL); }

}  // namespace vorel
