#include "metafile/metafile_file.h"

#include <array>

#include "dib/device_bitmap.h"
#include "dib/device_palette.h"
#include "frame/thread_context.h"
#include "metafile/records.h"
#include "platform/file.h"
#include "platform/user.h"

namespace vorel::metafile {
namespace {

// ---- Loading ----

Result<MetafileStart> start_of(FileRef file) {
  std::array<uint8_t, kMetafileStartBytes> bytes{};
  const int64_t count = file.read(bytes.data(), bytes.size());
  if (count < 0) return Error::kFileIo;
  return read_metafile_start(std::span(bytes).first(static_cast<size_t>(count)));
}

// A Windows metafile may end early; an enhanced one is complete or damaged.
Result<OwnedMetafile> metafile_in(FileRef file, const MetafileStart& start) {
  const size_t room = start.is_enhanced ? 0 : kRoomBehindRecords;
  const auto block = VOREL_TRY(or_error(ZeroedBuffer::allocate(start.block_bytes() + room), Error::kMemory));
  file.seek(static_cast<int64_t>(start.offset), SeekFrom::kStart);
  const int64_t count = file.read(block.bytes().data(), static_cast<size_t>(start.bytes));
  if (count <= 0) return Error::kFileIo;
  if (start.is_enhanced && static_cast<uint64_t>(count) != start.bytes) return Error::kCreateMetafile;
  const auto kind = start.is_enhanced ? MetafileKind::kEnhanced : MetafileKind::kWindows;
  return or_error(OwnedMetafile::make(block.bytes().first(static_cast<size_t>(count) + room), kind), Error::kCreateMetafile);
}

// ---- Saving ----

// A metafile that is being recorded into a file, closed with its scope.
class Recording {
 public:
  Recording(const char* path, MetafileKind kind, HDC made_for, const Edges& frame) : kind_(kind) {
    const RECT rect{frame.left, frame.top, frame.right, frame.bottom};
    dc_ = kind == MetafileKind::kWindows ? CreateMetaFileA(path) : CreateEnhMetaFileA(made_for, path, &rect, nullptr);
  }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;
  ~Recording() {
    if (dc_ == nullptr) return;
    if (kind_ == MetafileKind::kWindows) {
      DeleteMetaFile(CloseMetaFile(dc_));
    } else {
      DeleteEnhMetaFile(CloseEnhMetaFile(dc_));
    }
  }

  explicit operator bool() const { return dc_ != nullptr; }
  HDC get() const { return dc_; }

 private:
  MetafileKind kind_;
  HDC dc_;
};

// Records the picture, and the selection of its own colours. The context is destroyed before the palette.
bool record(const char* path, const DeviceDib& picture, HPALETTE palette, MetafileKind kind, HDC made_for) {
  const Recording recording(path, kind, made_for, enhanced_frame_for(picture.size()));
  if (!recording) return false;
  const HDC dc = recording.get();
  SetMapMode(dc, MM_TEXT);
  if (palette != nullptr) SelectPalette(dc, palette, FALSE);
  SelectObject(dc, GetStockObject(WHITE_BRUSH));
  const Rect whole{0, 0, picture.size().width, picture.size().height};
  picture.stretch(dc, whole, whole, SRCCOPY);
  return true;
}

// Puts a placeable header in front of a file's content. A file that cannot be read back stays as it is.
void make_placeable(const char* path, Size pixels, Resolution screen) {
  std::optional<ZeroedBuffer> contents;
  {
    const auto file = OwnedFile::open_as_named(path);
    const int64_t size = file ? file->size() : -1;
    if (size < 0) return;
    contents = ZeroedBuffer::allocate(static_cast<uint64_t>(size));
    if (!contents || file->read(contents->bytes().data(), contents->bytes().size()) != size) return;
  }
  const auto file = OwnedFile::create_as_named(path);
  if (!file) return;
  const PlaceableHeader header = placeable_header_for(pixels, screen);
  file->write(&header, sizeof header);
  file->write(contents->bytes().data(), contents->bytes().size());
}

void save(const char* path, HGLOBAL handle, MetafileKind kind, HDC made_for) {
  const WaitCursor cursor;
  const auto dib = LockedDib::lock(handle);
  if (!dib || path == nullptr) return;
  const auto picture = DeviceDib::of(*dib);
  if (!picture || picture->header().width <= 0 || picture->header().height == 0) return;
  const auto palette = palette_of(*dib);
  if (!palette) set_thread_error(palette.error());
  if (!record(path, *picture, palette ? palette->get() : nullptr, kind, made_for)) return;
  if (kind == MetafileKind::kWindows) make_placeable(path, picture->size(), screen_resolution());
}

}  // namespace

Result<OwnedBitmap> load_metafile(const char* path) {
  const WaitCursor cursor;
  const auto file = OwnedFile::open_as_named(path);
  if (!file) return Error::kUnreported;
  const MetafileStart start = VOREL_TRY(start_of(*file));
  const OwnedMetafile metafile = VOREL_TRY(metafile_in(*file, start));
  return draw_metafile(metafile.get(), pixels_of(start.extent, screen_resolution()), metafile.kind());
}

void save_dib_in_metafile(const char* path, HGLOBAL dib, MetafileKind kind) {
  const WindowDc screen(GetActiveWindow());
  save(path, dib, kind, screen.get());
}

void save_bitmap_in_metafile(const char* path, HBITMAP bitmap, MetafileKind kind) {
  auto dib = dib_of(bitmap, nullptr);
  if (!dib) return;
  const OwnedBlock block(dib->release());
  save(path, block.get(), kind, nullptr);
}

}  // namespace vorel::metafile
