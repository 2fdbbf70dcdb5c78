// Image files of any format.
#include <vorel32.h>

#include "exports/boundary.h"
#include "formats/fax_set.h"
#include "formats/format.h"
#include "formats/image_file.h"

using namespace vorel;

extern "C" {

int VORELCALL GetImageFormat(LPCSTR path) {
  return at_silent_boundary([&]() -> Result<int> { return int{recognise(read_file_start(path), path)}; });
}

HGLOBAL VORELCALL LoadImageIntoDIB(LPCSTR path, int page, int* status) {
  return at_boundary(ThreadCode{}, [&] { return load_image({.path = path, .page = page, .status = status}); });
}

BOOL VORELCALL SaveDIBInImageFormat(LPCSTR path, HGLOBAL dib, int format, int option, int value) {
  return at_boundary(ThreadCode{},
                     [&] { return save_image(format, {.path = path, .dib = dib, .option = option, .value = value}); });
}

int VORELCALL GetNumberOfImagesInFaxFile(LPCSTR path) {
  constexpr int kUnknown = -1;  // the one export whose failure is not zero
  return at_silent_boundary([&]() -> Result<int> {
    const auto pages = pages_in_fax_set(path);
    if (!pages) set_thread_error(Error::kOpenFile);
    return pages.value_or(kUnknown);
  });
}

HGLOBAL VORELCALL LoadColorFaxPage(LPCSTR path, int page, int* status) {
  return at_boundary(ThreadCode{}, [&] { return load_fax_page({.path = path, .page = page, .status = status}); });
}

}  // extern "C"
