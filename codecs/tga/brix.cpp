// BRIX: saves TGA files.
#include <type_traits>

#include "common/entry.h"
#include "common/file.h"
#include "tga/tga.h"

CODEC_ENTRY BOOL VORELCALL SaveDIBInTGAFormat(LPCSTR path, HGLOBAL dib, int run_length, int footer) {
  return codec::at_entry(nullptr, [&]() -> BOOL {
    const codec::SourceDib source(dib);
    const codec::TgaWriter picture(source, run_length != 0);
    codec::OutputFile file(path);
    picture.write(file);
    if (footer == 1) codec::write_tga_footer(file);
    file.complete();
    return TRUE;
  });
}
static_assert(std::is_same_v<decltype(&SaveDIBInTGAFormat), ImgSaveTga>);
