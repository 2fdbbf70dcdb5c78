// Metafiles drawn into bitmaps of the screen's format.
#pragma once

#include <optional>
#include <span>

#include "core/view.h"
#include "frame/error.h"
#include "metafile/header.h"
#include "platform/windows/gdi.h"

namespace vorel::metafile {

enum class MetafileKind { kWindows, kEnhanced };

// A metafile of either kind, deleted with its scope.
class OwnedMetafile {
 public:
  // Makes one from a file's bytes, and makes unsafe records harmless in place. None if no record can be played or the system
  // refuses it.
  //   bytes    a Windows metafile, and kRoomBehindRecords bytes behind it; or an enhanced one
  static std::optional<OwnedMetafile> make(std::span<uint8_t> bytes, MetafileKind kind);

  // The part of a Windows metafile that can be played. None for anything but a metafile.
  static Result<OwnedMetafile> playable_copy(HMETAFILE metafile);

  OwnedMetafile(OwnedMetafile&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)), kind_(other.kind_) {}
  OwnedMetafile& operator=(OwnedMetafile&&) = delete;
  ~OwnedMetafile();

  HANDLE get() const { return handle_; }
  MetafileKind kind() const { return kind_; }

 private:
  OwnedMetafile(HANDLE handle, MetafileKind kind) : handle_(handle), kind_(kind) {}

  HANDLE handle_;
  MetafileKind kind_;
};

// The resolution of the active window's screen.
Resolution screen_resolution();

// Draws a metafile of any owner on a white bitmap. If that is too large, half its size is tried, and so on: it then shows
// the upper left part of the picture, which keeps its size.
Result<OwnedBitmap> draw_metafile(HANDLE metafile, Size size, MetafileKind kind);

}  // namespace vorel::metafile
