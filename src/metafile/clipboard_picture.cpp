#include "metafile/clipboard_picture.h"

#include <cstring>
#include <optional>

#include "metafile/units.h"
#include "platform/memory.h"
#include "platform/user.h"

namespace vorel::metafile {
namespace {

constexpr const char* kTitle = "ERROR";

// The clipboard, open for a scope.
class [[nodiscard]] OpenedClipboard {
 public:
  explicit OpenedClipboard(HWND owner) : is_open_(OpenClipboard(owner) != FALSE) {}
  OpenedClipboard(const OpenedClipboard&) = delete;
  OpenedClipboard& operator=(const OpenedClipboard&) = delete;
  ~OpenedClipboard() {
    if (is_open_) CloseClipboard();
  }

  explicit operator bool() const { return is_open_; }

 private:
  bool is_open_;
};

Size size_in(HWND owner, const METAFILEPICT& picture) {
  const PictureLengths lengths{static_cast<MappingMode>(picture.mm), picture.xExt, picture.yExt};
  const WindowDc window(owner);
  if (!window) return pixels_on_clipboard(lengths, 0, {640, 480});
  const auto capability = [&](int index) { return GetDeviceCaps(window.get(), index); };
  return pixels_on_clipboard(lengths, capability(LOGPIXELSX), {capability(HORZSIZE), capability(VERTSIZE)});
}

std::optional<METAFILEPICT> picture_on_clipboard() {
  const auto block = LockedBlock::lock(GetClipboardData(CF_METAFILEPICT));
  METAFILEPICT picture;
  if (!block || block->bytes().size() < sizeof picture) return std::nullopt;
  std::memcpy(&picture, block->bytes().data(), sizeof picture);
  return picture;
}

}  // namespace

Result<OwnedBitmap> draw_clipboard_picture(HWND owner) {
  if (!IsWindow(owner)) return Error::kUnreported;
  std::optional<OpenedClipboard> clipboard(owner);
  if (!*clipboard) {
    show_error_message("Could not open clipboard", kTitle);
    return Error::kClipboard;
  }
  const auto picture = picture_on_clipboard();
  if (!picture) return Error::kMemory;
  // A metafile that cannot be played draws nothing.
  const auto metafile = OwnedMetafile::playable_copy(picture->hMF);
  auto bitmap = draw_metafile(metafile ? metafile->get() : nullptr, size_in(owner, *picture), MetafileKind::kWindows);
  clipboard.reset();  // other programs need not wait for the message to be read
  if (!bitmap) show_error_message("Could not draw meta file into a bitmap", kTitle);
  return bitmap;
}

}  // namespace vorel::metafile
