#include "formats/clipboard_file.h"

#include <algorithm>

#include "dib/device_bitmap.h"
#include "formats/device_text.h"
#include "metafile/device_metafile.h"
#include "metafile/records.h"
#include "platform/file.h"
#include "platform/memory.h"

namespace vorel::formats {
namespace {

// Leaves the file position behind the entry found. Entries past the end of the file are not read.
Result<ClipboardEntry> find_entry(FileRef file, ClipboardFormat format) {
  std::array<uint8_t, sizeof(ClipboardFileHeader)> start{};
  file.read(start.data(), start.size());
  const auto count = VOREL_TRY(read_clipboard_header(start));
  const auto directory = ZeroedBuffer::allocate(ByteCount(count) * sizeof(ClipboardEntry));
  if (!directory) return Error::kMemory;
  const int64_t read = file.read(directory->bytes().data(), directory->bytes().size());
  return find_entry(directory->bytes().first(static_cast<size_t>(std::max<int64_t>(read, 0))), format);
}

// The data of an entry. Nothing is allocated for data past the end of the file.
Result<OwnedBlock> read_entry(FileRef file, const ClipboardEntry& entry) {
  const int64_t size = file.size();
  if (size < 0 || !lies_within(entry, static_cast<uint64_t>(size))) return Error::kFileIo;
  auto block = OwnedBlock::allocate(entry.bytes);
  if (!block) return Error::kMemory;
  if (entry.bytes == 0) return std::move(*block);
  const auto locked = LockedBlock::lock(block->get());
  if (!locked) return Error::kMemory;
  file.seek(entry.offset, SeekFrom::kStart);
  if (file.read(locked->bytes().data(), entry.bytes) != entry.bytes) return Error::kFileIo;
  return std::move(*block);
}

Result<OwnedBitmap> draw_metafile_picture(HGLOBAL picture) {
  const auto locked = LockedBlock::lock(picture);
  if (!locked || locked->bytes().size() < kPictureHeaderBytes) return Error::kFileIo;
  const metafile::PictureLengths lengths = read_picture_header(locked->bytes().first<kPictureHeaderBytes>());
  const auto bytes = locked->bytes().subspan(kPictureHeaderBytes);
  const auto copy =
      VOREL_TRY(or_error(ZeroedBuffer::allocate(ByteCount(bytes.size()) + metafile::kRoomBehindRecords), Error::kMemory));
  std::ranges::copy(bytes, copy.bytes().begin());
  const auto made =
      VOREL_TRY(or_error(metafile::OwnedMetafile::make(copy.bytes(), metafile::MetafileKind::kWindows), Error::kUnreported));
  return metafile::draw_metafile(made.get(), metafile::pixels_in_file(lengths, metafile::screen_resolution()), made.kind());
}

Result<OwnedBitmap> draw(HGLOBAL data, ClipboardFormat format) {
  switch (format) {
    case ClipboardFormat::kText: return draw_text(data);
    case ClipboardFormat::kMetafilePicture: return draw_metafile_picture(data);
    case ClipboardFormat::kDib: return bitmap_of(data);
    default: return Error::kClipboardFormat;
  }
}

}  // namespace

Result<HANDLE> load_clipboard_format(const char* path, ClipboardFormat format) {
  const auto file = OwnedFile::open_as_named(path);
  if (!file) return Error::kOpenFile;
  const ClipboardEntry entry = VOREL_TRY(find_entry(*file, format));
  if (!is_read(format)) return Error::kClipboardFormat;
  OwnedBlock data = VOREL_TRY(read_entry(*file, entry));
  if (format == ClipboardFormat::kBitmap) return data.release();
  return static_cast<HANDLE>(VOREL_TRY(draw(data.get(), format)).release());
}

Result<bool> save_clipboard_file(const char* path, HBITMAP bitmap) {
  const OwnedDib dib = VOREL_TRY(dib_of(bitmap, nullptr));
  const std::span<uint8_t> block = dib.bytes();
  const DibHeader header = read_header(block);
  const ByteCount bytes = kHeaderBytes + palette_bytes(header) + header.image_bytes;
  const auto written = block.first(static_cast<size_t>(bytes.value()));
  const auto file = OwnedFile::create_as_named(path);
  if (!file) return Error::kOpenFile;
  const ClipboardDibStart start = clipboard_start_for_dib(static_cast<uint32_t>(written.size()));
  const bool is_whole = file->write(&start, sizeof start) == sizeof start &&
                        file->write(written.data(), written.size()) == static_cast<int64_t>(written.size());
  if (!is_whole) return Error::kFileIo;
  return true;
}

}  // namespace vorel::formats
