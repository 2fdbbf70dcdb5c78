// MERV32: loads TIFF pages and CALS rasters.
#include <string>
#include <tiffio.h>
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

CODEC_ENTRY LPCSTR VORELCALL NameOfLibraries(void) {
  static const std::string name = [] {
    const std::string text = TIFFGetVersion();  // "LIBTIFF, Version 4.5.0" and more lines
    const size_t number = text.find_last_of(' ', text.find('\n')) + 1;
    return "libtiff " + text.substr(number, text.find('\n') - number);
  }();
  return name.c_str();
}

static_assert(std::is_same_v<decltype(&LoadTiffIntoDIB), ImgLoadPage>);
static_assert(std::is_same_v<decltype(&LoadCALSIntoDIB), ImgLoadPicture>);
static_assert(std::is_same_v<decltype(&GetNumberOfImagesInTiffFile), ImgCountPages>);
static_assert(std::is_same_v<decltype(&GetTiffCompression), ImgTiffCompression>);
static_assert(std::is_same_v<decltype(&NameOfLibraries), ImgNameOfLibraries>);
