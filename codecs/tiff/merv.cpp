// MERV: saves TIFF pages and CALS rasters.
#include <type_traits>

#include "tiff/cals.h"
#include "tiff/writer.h"

using namespace codec;

CODEC_ENTRY BOOL VORELCALL SaveDIBInTiffFormat(LPCSTR path, HGLOBAL dib, int compression, int page) {
  return at_entry(nullptr, [&]() -> BOOL {
    save_tiff(path, SourceDib(dib), compression, page != 1);
    return TRUE;
  });
}

CODEC_ENTRY BOOL VORELCALL SAVEDIBINCALSFORMAT(LPCSTR path, HGLOBAL dib, int /*reserved1*/, int /*reserved2*/,
                                               int /*reserved3*/) {
  return at_entry(nullptr, [&]() -> BOOL {
    const std::vector<uint8_t> content = cals_file(SourceDib(dib));
    OutputFile file(path);
    file.write(content);
    file.complete();
    return TRUE;
  });
}

static_assert(std::is_same_v<decltype(&SaveDIBInTiffFormat), ImgSaveTiff>);
static_assert(std::is_same_v<decltype(&SAVEDIBINCALSFORMAT), ImgSaveCals>);
