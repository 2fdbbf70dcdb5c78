// ODAL32: loads PCX and DCX files.
#include <algorithm>
#include <type_traits>

#include "common/entry.h"
#include "common/file.h"
#include "pcx/dcx.h"
#include "pcx/pcx.h"

namespace {

codec::DcxDirectory directory_of(const codec::InputFile& file) {
  return codec::DcxDirectory(file.read(0, codec::DcxDirectory::kBytes));
}

// The header is checked before memory is allocated for the rest.
HGLOBAL load_picture(const codec::InputFile& file, uint64_t offset, uint64_t size) {
  codec::check_pcx_start(file.read(offset, std::min<uint64_t>(size, sizeof(codec::PcxHeader))));
  return codec::read_pcx(file.read(offset, size));
}

}  // namespace

CODEC_ENTRY HGLOBAL VORELCALL LoadPCXIntoDIB(LPCSTR path, int* status) {
  return codec::at_entry(status, [&] {
    const codec::InputFile file(path);
    return load_picture(file, 0, file.size());
  });
}
static_assert(std::is_same_v<decltype(&LoadPCXIntoDIB), ImgLoadPicture>);

CODEC_ENTRY HGLOBAL VORELCALL LoadDCXIntoDIB(LPCSTR path, int page, int* status) {
  return codec::at_entry(status, [&] {
    const codec::InputFile file(path);
    const auto [offset, size] = directory_of(file).page(page, file.size());
    return load_picture(file, offset, size);
  });
}
static_assert(std::is_same_v<decltype(&LoadDCXIntoDIB), ImgLoadPage>);

CODEC_ENTRY int VORELCALL GetNumberOfImagesInDCXFile(LPCSTR path, int* status) {
  return codec::at_entry(status, [&] { return directory_of(codec::InputFile(path)).page_count(); });
}
static_assert(std::is_same_v<decltype(&GetNumberOfImagesInDCXFile), ImgCountPages>);
