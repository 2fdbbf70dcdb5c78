// Image files of any kind: selects the part of the library or the codec module that reads and writes them.
#pragma once

#include "frame/error.h"
#include "platform/win32.h"

namespace vorel::formats {

struct LoadRequest {
  const char* path;
  int page;                // counted from 1
  int* status;             // the caller's; may be null
  int enclosing_sets = 0;  // page sets that are being loaded around this one
};

// Writes an error to the status variable of a loader's caller.
inline void report_status(const LoadRequest& request, Error error) {
  if (request.status != nullptr) *request.status = static_cast<int>(error);
}

// The new DIB. Failures of codec modules are unreported: they have already set the status.
Result<HGLOBAL> load_image(const LoadRequest& request);

struct SaveRequest {
  const char* path;
  HGLOBAL dib;
  int option;
  int value;
};

// The result of the format's saver. A format that is not saved fails unreported.
Result<BOOL> save_image(int format, const SaveRequest& request);

}  // namespace vorel::formats
