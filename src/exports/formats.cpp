// Image files of any format.
#include <vorel32.h>

#include "exports/boundary.h"
#include "formats/fax_set.h"
#include "formats/format.h"
#include "formats/image_file.h"

using namespace vorel;

extern "C" {

int VORELCALL GetImageFormat(LPCSTR path) {
  return at_silent_boundary([&]() -> Result<int> { return int{formats::recognise(formats::read_file_start(path), path)}; });
}

HGLOBAL VORELCALL LoadImageIntoDIB(LPCSTR path, int page, int* status) {
  return at_boundary(ThreadCode{}, [&] { return formats::load_image({.path = path, .page = page, .status = status}); });
}

BOOL VORELCALL SaveDIBInImageFormat(LPCSTR path, HGLOBAL dib, int format, int option, int value) {
  return at_boundary(ThreadCode{}, [&] {
    return formats::save_image(format, {.path = path, .dib = dib, .option = option, .value = value});
  });
}

int VORELCALL GetNumberOfImagesInFaxFile(LPCSTR path) {
  return at_boundary(
      ThreadCode{}, [&] { return formats::pages_in_fax_set(path); }, formats::kUnknownPages);
}

HGLOBAL VORELCALL LoadColorFaxPage(LPCSTR path, int page, int* status) {
  return at_boundary(ThreadCode{}, [&] { return formats::load_fax_page({.path = path, .page = page, .status = status}); });
}

}  // extern "C"
