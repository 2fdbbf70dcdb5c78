// Image files of any kind: which part of the library or which codec module reads and writes them.
#pragma once

#include "frame/error.h"
#include "platform/win32.h"

namespace vorel {

struct LoadRequest {
  const char* path;
  int page;                // counted from 1
  int* status;             // the caller's; may be null
  int enclosing_sets = 0;  // page sets that are being loaded and led here
};

// Writes an error where the caller of a loader looks for it.
inline void report_status(const LoadRequest& request, Error error) {
  if (request.status != nullptr) *request.status = static_cast<int>(error);
}

// The new DIB. What codec modules fail with is unreported: they have told the status.
Result<HGLOBAL> load_image(const LoadRequest& request);

struct SaveRequest {
  const char* path;
  HGLOBAL dib;
  int option;
  int value;
};

// What the format's saver returned. A format that is not saved fails unreported.
Result<BOOL> save_image(int format, const SaveRequest& request);

}  // namespace vorel
