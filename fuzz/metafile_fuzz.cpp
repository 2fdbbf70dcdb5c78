// Headers and records of whatever comes as a metafile, as far as they are read before anything is drawn.
#include <vector>

#include "calls.h"
#include "metafile/header.h"
#include "metafile/records.h"
#include "metafile/units.h"

using namespace vorel;
using namespace vorel::metafile;

namespace {

constexpr Resolution kScreen{96, 120};

void read_metafile(std::span<const uint8_t> bytes) {
  const auto start = read_metafile_start(bytes.first(std::min(bytes.size(), kMetafileStartBytes)));
  if (!start) return;
  const Size size = pixels_of(start->extent, kScreen);
  fuzz::require(size.width > 0 && size.height > 0);
  std::vector<uint8_t> copy(bytes.begin() + static_cast<std::ptrdiff_t>(start->offset), bytes.end());
  std::vector<uint8_t> enhanced = copy;
  const auto all = playable_enhanced_metafile(enhanced);
  fuzz::require(playable_enhanced_metafile(all).size() == all.size());
  copy.resize(copy.size() + kRoomBehindRecords);
  const auto played = playable_windows_metafile(copy);
  std::vector<uint8_t> again(played.begin(), played.end());
  fuzz::require(playable_windows_metafile(again).size() == played.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  read_metafile({data, size});
  return 0;
}
