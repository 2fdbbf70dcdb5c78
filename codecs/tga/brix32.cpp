// BRIX32: loads TGA files.
#include <type_traits>

#include "common/entry.h"
#include "common/file.h"
#include "tga/tga.h"

CODEC_ENTRY HGLOBAL VORELCALL LoadTGAIntoDIB(LPCSTR path, int* status) {
  return codec::at_entry(status, [&] { return codec::read_tga(codec::InputFile(path).read_all()); });
}
static_assert(std::is_same_v<decltype(&LoadTGAIntoDIB), ImgLoadPicture>);
