#include "viewer/clipboard.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include "common/bitmap_file.h"
#include "common/forms.h"
#include "platform/memory.h"
#include "viewer/failure.h"

namespace vorel::viewer {
namespace {

using programs::Picture;

// The clipboard, open for a scope.
class OpenedClipboard {
 public:
  explicit OpenedClipboard(HWND owner) {
    if (!OpenClipboard(owner)) throw Failure(L"The clipboard is in use by another program");
  }
  OpenedClipboard(const OpenedClipboard&) = delete;
  OpenedClipboard& operator=(const OpenedClipboard&) = delete;
  ~OpenedClipboard() { CloseClipboard(); }
};

// The block belongs to the clipboard. It may have colour masks and any order of rows.
Picture pasted_dib(HWND owner) {
  const OpenedClipboard clipboard(owner);
  const auto block = LockedBlock::lock(GetClipboardData(CF_DIB));
  if (!block) throw Failure(L"There is no picture on the clipboard");
  std::istringstream bytes(std::string(block->bytes().begin(), block->bytes().end()));
  return about(L"The picture on the clipboard cannot be read",
               [&] { return programs::read_bitmap(bytes, block->bytes().size()); });
}

// The library opens the clipboard itself, and draws what is there.
Picture pasted_metafile(HWND owner) {
  SetImgError(IMG_OK);
  const HGLOBAL dib = PlaceMetaFileIntoDIBFromCLP(owner);
  if (dib == nullptr) throw Failure(L"The metafile on the clipboard is not pasted: " + reason(0, L"it cannot be drawn"));
  return Picture(dib);
}

// The first that is there counts. The system makes metafile pictures of enhanced metafiles, but none of bitmaps.
constexpr struct {
  UINT format;
  Picture (*paste)(HWND owner);
} kKinds[] = {{CF_METAFILEPICT, pasted_metafile}, {CF_DIB, pasted_dib}};

const auto* first_kind_there() {
  return std::ranges::find_if(kKinds, [](const auto& kind) { return IsClipboardFormatAvailable(kind.format) != FALSE; });
}

}  // namespace

bool can_paste() { return first_kind_there() != std::end(kKinds); }

Picture paste_picture(HWND owner) {
  const auto* kind = first_kind_there();
  if (kind == std::end(kKinds)) throw Failure(L"There is no picture on the clipboard");
  return programs::with_whole_table(programs::workable(kind->paste(owner)));
}

void copy_picture(HWND owner, const Picture& picture) {
  Picture copy = picture.copy();
  const OpenedClipboard clipboard(owner);
  EmptyClipboard();
  const HGLOBAL block = copy.release();
  if (SetClipboardData(CF_DIB, block) != nullptr) return;  // the clipboard's from now on
  GlobalFree(block);
  throw Failure(L"The clipboard does not take the picture");
}

}  // namespace vorel::viewer
