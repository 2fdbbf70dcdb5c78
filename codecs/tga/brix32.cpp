// BRIX32: loads TGA files.
#include <type_traits>

#include "common/entry.h"
#include "common/file.h"
#include "tga/tga.h"

CODEC_ENTRY HGLOBAL VORELCALL LoadTGAIntoDIB(LPCSTR path, int* status) {
  return codec::at_entry(status, [&] {
    const codec::InputFile file(path);
    // The header is checked before memory is allocated for the rest.
    codec::check_tga_start(file.read(0, sizeof(codec::TgaHeader)));
    return codec::read_tga(file.read_all());
  });
}
static_assert(std::is_same_v<decltype(&LoadTGAIntoDIB), ImgLoadPicture>);
