// A print job of the calling thread, from its preparation to its end.
#pragma once

#include <vorel32.h>

#include "platform/win32.h"

namespace vorel::print {

struct JobRequest {
  HWND owner;
  HDC printer_dc;             // may be null
  ImgPrintOptions* options;   // may be null
  const char* document_name;  // may be null
  int page_count;
};

// The system's callbacks during a job.
struct JobProcedures {
  DLGPROC page_dialog, cancel_dialog;
  ABORTPROC abort;
};

struct PageRequest {
  HGLOBAL dib;
  const int* image_dpi;  // may be null
  int index;             // from 0
  POINT offset;          // in dots
};

// These return the codes of the exports of the same purpose; 0 is success.
int prepare_job(const JobRequest& request, const JobProcedures& procedures);
int print_page(const PageRequest& request);
int end_job(HDC printer_dc);

void continue_page();

// Dispatches the thread's messages. False once the job is cancelled. A `spooler_code` other than 0 cancels it.
bool let_messages_through(int spooler_code);

// Handles the messages of the cancel dialog. True if the message is handled.
bool follow_cancel_dialog(HWND dialog, UINT message, LPARAM text);

}  // namespace vorel::print
