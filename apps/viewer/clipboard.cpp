#include "viewer/clipboard.h"

#include <algorithm>
#include <iterator>

#include "viewer/failure.h"
#include "viewer/picture.h"

namespace vorel::viewer {
namespace {

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

// The block belongs to the clipboard.
Dib copy_of_block(HGLOBAL block) {
  const size_t bytes = GlobalSize(block);
  Dib copy(GlobalAlloc(GHND, bytes));
  const void* data = GlobalLock(block);
  if (data == nullptr || !copy || bytes < sizeof(BITMAPINFOHEADER)) {
    GlobalUnlock(block);
    throw Failure(L"The picture on the clipboard cannot be read");
  }
  std::memcpy(DibLock(copy).bytes().data(), data, bytes);
  GlobalUnlock(block);
  return copy;
}

constexpr size_t kMasks = 3 * sizeof(DWORD);

bool has_masks_of_true_color(const Dib& dib) {
  const DibLock lock(dib);
  const BITMAPINFOHEADER header = lock.header();
  if (header.biSize != sizeof header || header.biBitCount != 32 || header.biCompression != BI_BITFIELDS) return false;
  if (lock.bytes().size() < sizeof header + kMasks) return false;
  DWORD masks[3];
  std::memcpy(masks, lock.bytes().data() + sizeof header, sizeof masks);
  return masks[0] == 0xFF0000 && masks[1] == 0xFF00 && masks[2] == 0xFF;
}

// Masks that say what 32 bits mean anyway are in the library's way.
Dib without_masks(Dib dib) {
  if (!has_masks_of_true_color(dib)) return dib;
  const DibLock lock(dib);
  const auto bytes = lock.bytes();
  BITMAPINFOHEADER header = lock.header();
  header.biCompression = BI_RGB;
  header.biClrUsed = 0;
  std::memcpy(bytes.data(), &header, sizeof header);
  std::ranges::copy(bytes.subspan(sizeof header + kMasks), bytes.subspan(sizeof header).begin());
  return dib;
}

Dib pasted_dib(HWND owner) {
  const OpenedClipboard clipboard(owner);
  const HANDLE block = GetClipboardData(CF_DIB);
  if (block == nullptr) throw Failure(L"There is no picture on the clipboard");
  return without_masks(copy_of_block(block));
}

// The library opens the clipboard itself, and draws what is there.
Dib pasted_metafile(HWND owner) {
  SetImgError(IMG_OK);
  Dib dib(PlaceMetaFileIntoDIBFromCLP(owner));
  if (!dib) throw Failure(L"The metafile on the clipboard is not pasted: " + reason(0, L"it cannot be drawn"));
  return dib;
}

// The first that is there counts. The system makes metafile pictures of enhanced metafiles, but none of bitmaps.
constexpr struct {
  UINT format;
  Dib (*paste)(HWND owner);
} kKinds[] = {{CF_METAFILEPICT, pasted_metafile}, {CF_DIB, pasted_dib}};

const auto* first_kind_there() {
  return std::ranges::find_if(kKinds, [](const auto& kind) { return IsClipboardFormatAvailable(kind.format) != FALSE; });
}

}  // namespace

bool can_paste() { return first_kind_there() != std::end(kKinds); }

Dib paste_picture(HWND owner) {
  const auto* kind = first_kind_there();
  if (kind == std::end(kKinds)) throw Failure(L"There is no picture on the clipboard");
  return normalised(kind->paste(owner));
}

void copy_picture(HWND owner, const Dib& dib) {
  Dib copy = copy_of(dib);
  const OpenedClipboard clipboard(owner);
  EmptyClipboard();
  if (SetClipboardData(CF_DIB, copy.get()) == nullptr) throw Failure(L"The clipboard does not take the picture");
  static_cast<void>(copy.release());  // the clipboard's from now on
}

}  // namespace vorel::viewer
