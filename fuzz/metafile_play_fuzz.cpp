// Metafiles drawn by the system's player, behind the checks.
#include <vector>

#include "frame/thread_context.h"
#include "metafile/device_metafile.h"
#include "metafile/records.h"

using namespace vorel;
using namespace vorel::metafile;

namespace {

void draw(std::vector<uint8_t> bytes, MetafileKind kind) {
  const auto metafile = OwnedMetafile::make(bytes, kind);
  if (metafile) (void)draw_metafile(metafile->get(), {50, 50}, kind);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool attached = follow_module_notice(ModuleNotice::kProcessAttach, false);
  const auto start = read_metafile_start({data, std::min(size, kMetafileStartBytes)});
  if (!attached || !start) return 0;
  std::vector<uint8_t> bytes(data + start->offset, data + size);
  if (start->is_enhanced) {
    draw(std::move(bytes), MetafileKind::kEnhanced);
  } else {
    bytes.resize(bytes.size() + kRoomBehindRecords);
    draw(std::move(bytes), MetafileKind::kWindows);
  }
  return 0;
}
