// MERV32: loads TIFF pages and CALS rasters.
#include <type_traits>

#include "tiff/cals.h"
#include "tiff/directories.h"
#include "tiff/reader.h"

using namespace codec;

CODEC_ENTRY HGLOBAL VORELCALL LoadTiffIntoDIB(LPCSTR path, int page, int* status) {
  return at_entry(status, [&]() -> HGLOBAL {
    const InputFile file(path);
    FileBytes bytes(file);
    return read_tiff(bytes, page);
  });
}

CODEC_ENTRY HGLOBAL VORELCALL LoadCALSIntoDIB(LPCSTR path, int* status) {
  return at_entry(status, [&]() -> HGLOBAL { return read_cals(InputFile(path).read_all()); });
}

CODEC_ENTRY int VORELCALL GetNumberOfImagesInTiffFile(LPCSTR path, int* status) {
  return at_entry(status, [&]() -> int {
    const InputFile file(path);
    FileBytes bytes(file);
    const size_t pages = follow_directories(bytes).pages;
    if (pages == 0) fail(IMG_E_FORMAT);
    return static_cast<int>(pages);
  });
}

CODEC_ENTRY int VORELCALL GetTiffCompression(LPCSTR path, int page, int* status) {
  return at_entry(status, [&]() -> int {
    const InputFile file(path);
    FileBytes bytes(file);
    return read_tiff_compression(bytes, page);
  });
}

static_assert(std::is_same_v<decltype(&LoadTiffIntoDIB), ImgLoadPage>);
static_assert(std::is_same_v<decltype(&LoadCALSIntoDIB), ImgLoadPicture>);
static_assert(std::is_same_v<decltype(&GetNumberOfImagesInTiffFile), ImgCountPages>);
static_assert(std::is_same_v<decltype(&GetTiffCompression), ImgTiffCompression>);
