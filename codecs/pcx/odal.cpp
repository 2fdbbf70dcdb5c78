// ODAL: saves PCX and DCX files.
#include <type_traits>

#include "common/entry.h"
#include "common/file.h"
#include "pcx/dcx.h"
#include "pcx/pcx.h"

CODEC_ENTRY BOOL VORELCALL SaveDIBInPCXFormat(LPCSTR path, HGLOBAL dib, int* status) {
  return codec::at_entry(status, [&]() -> BOOL {
    const codec::SourceDib source(dib);
    const codec::PcxWriter picture(source);
    codec::OutputFile file(path);
    picture.write(file);
    file.complete();
    return TRUE;
  });
}
static_assert(std::is_same_v<decltype(&SaveDIBInPCXFormat), ImgSavePicture>);

CODEC_ENTRY BOOL VORELCALL MakeDCXFile(LPCSTR path, int* status) {
  return codec::at_entry(status, [&]() -> BOOL {
    codec::make_dcx(path);
    return TRUE;
  });
}
static_assert(std::is_same_v<decltype(&MakeDCXFile), ImgMakeFile>);

CODEC_ENTRY BOOL VORELCALL SaveDIBInDCXFormat(LPCSTR path, HGLOBAL dib, int* status) {
  return codec::at_entry(status, [&]() -> BOOL {
    codec::add_dcx_page(path, codec::SourceDib(dib));
    return TRUE;
  });
}
static_assert(std::is_same_v<decltype(&SaveDIBInDCXFormat), ImgSavePicture>);
