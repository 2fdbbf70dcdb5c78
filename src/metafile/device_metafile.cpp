#include "metafile/device_metafile.h"

#include "dib/device_bitmap.h"
#include "metafile/records.h"

namespace vorel::metafile {
namespace {

OwnedBitmap largest_bitmap(Size size, HDC screen) {
  const int planes = GetDeviceCaps(screen, PLANES), bits = GetDeviceCaps(screen, BITSPIXEL);
  OwnedBitmap bitmap = empty_bitmap(size, planes, bits);
  while (!bitmap) {
    size = {size.width / 2, size.height / 2};
    if (size.width <= 1 || size.height <= 1) break;
    bitmap = empty_bitmap(size, planes, bits);
  }
  return bitmap;
}

void play(HDC dc, HANDLE metafile, Size bitmap, MetafileKind kind) {
  if (kind == MetafileKind::kWindows) {
    PlayMetaFile(dc, static_cast<HMETAFILE>(metafile));
  } else {
    const RECT whole{0, 0, bitmap.width - 1, bitmap.height - 1};
    PlayEnhMetaFile(dc, static_cast<HENHMETAFILE>(metafile), &whole);
  }
}

}  // namespace

std::optional<OwnedMetafile> OwnedMetafile::make(std::span<uint8_t> bytes, MetafileKind kind) {
  HANDLE handle = nullptr;
  if (kind == MetafileKind::kWindows) {
    const auto playable = playable_windows_metafile(bytes);
    handle = SetMetaFileBitsEx(static_cast<UINT>(playable.size()), playable.data());
  } else if (const auto playable = playable_enhanced_metafile(bytes); !playable.empty()) {
    handle = SetEnhMetaFileBits(static_cast<UINT>(playable.size()), playable.data());
  }
  if (handle == nullptr) return std::nullopt;
  return OwnedMetafile(handle, kind);
}

Result<OwnedMetafile> OwnedMetafile::playable_copy(HMETAFILE metafile) {
  const UINT size = GetMetaFileBitsEx(metafile, 0, nullptr);
  const auto block = VOREL_TRY(or_error(ZeroedBuffer::allocate(ByteCount(size) + kRoomBehindRecords), Error::kMemory));
  GetMetaFileBitsEx(metafile, size, block.bytes().data());
  return or_error(make(block.bytes(), MetafileKind::kWindows), Error::kCreateMetafile);
}

OwnedMetafile::~OwnedMetafile() {
  if (handle_ == nullptr) return;
  if (kind_ == MetafileKind::kWindows) {
    DeleteMetaFile(static_cast<HMETAFILE>(handle_));
  } else {
    DeleteEnhMetaFile(static_cast<HENHMETAFILE>(handle_));
  }
}

Resolution screen_resolution() {
  const WindowDc screen(GetActiveWindow());
  return {GetDeviceCaps(screen.get(), LOGPIXELSX), GetDeviceCaps(screen.get(), LOGPIXELSY)};
}

Result<OwnedBitmap> draw_metafile(HANDLE metafile, Size size, MetafileKind kind) {
  const WindowDc screen(GetActiveWindow());
  OwnedBitmap bitmap = largest_bitmap(size, screen.get());
  const auto facts = describe(bitmap.get());
  const MemoryDc memory(screen.get());
  if (!facts || !memory) return Error::kMemory;
  const HDC dc = memory.get();
  // Not by SaveDC: a metafile that restores one state more than it saved would restore that one.
  const Selection brush(dc, GetStockObject(WHITE_BRUSH));
  const Selection drawn_on(dc, bitmap.get());
  PatBlt(dc, 0, 0, facts->bmWidth, facts->bmHeight, PATCOPY);
  SetMapMode(dc, MM_ANISOTROPIC);
  SetWindowExtEx(dc, facts->bmWidth, facts->bmHeight, nullptr);
  SetViewportExtEx(dc, size.width, size.height, nullptr);
  play(dc, metafile, {facts->bmWidth, facts->bmHeight}, kind);
  return bitmap;
}

}  // namespace vorel::metafile
