#include "dib/bitmap_file.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <span>

#include "core/header.h"
#include "dib/open_dib.h"
#include "platform/user.h"

namespace vorel {
namespace {

template <class Struct>
bool read_whole(FileRef file, Struct& into) {
  return file.read(&into, sizeof into) == static_cast<int64_t>(sizeof into);
}

DibHeader widened(const DibHeader& read) {
  CoreHeader core;
  std::memcpy(&core, &read, sizeof core);
  return {.width = core.width, .height = core.height, .planes = core.planes, .depth = core.depth};
}

// The image size that a file's header leaves out. It is unsigned: for a top-down picture it is 2^32 minus the picture's size,
// more than any block holds, so that such a file loads only if it states its size. None for a negative width and for sizes
// that do not fit.
std::optional<uint32_t> computed_image_bytes(const DibHeader& header) {
  if (header.width < 0) return std::nullopt;
  const auto height = static_cast<uint32_t>(header.height);
  const uint32_t rows = header.height < 0 ? 0 - height : height;
  const ByteCount bytes = row_stride(header.depth, header.width) * rows;
  if (bytes > ByteCount(std::numeric_limits<uint32_t>::max())) return std::nullopt;
  const auto value = static_cast<uint32_t>(bytes.value());
  return header.height < 0 ? 0 - value : value;
}

// Expands a table of triples in place, last entry first: a quad never covers a triple that is still to be read.
void expand_triples(std::span<Rgb> table) {
  const auto* triples = reinterpret_cast<const uint8_t*>(table.data());
  for (size_t i = table.size(); i-- > 0;) {
    RgbTriple triple;
    std::memcpy(&triple, triples + i * sizeof triple, sizeof triple);
    table[i] = {triple.blue, triple.green, triple.red, 0};
  }
}

FileHeader file_header_for(const DibHeader& dib, size_t block_bytes) {
  return {.type = kBitmapFileType,
          .file_bytes = static_cast<uint32_t>(block_bytes + kFileHeaderBytes),
          .reserved1 = 0,
          .reserved2 = 0,
          .bits_offset = static_cast<uint32_t>((kFileHeaderBytes + bits_offset(dib)).value())};
}

// The part of a file in front of the colour table, with missing counts filled in.
struct FileInfo {
  DibHeader header;
  ByteCount table_bytes;   // in the file
  bool table_has_triples;  // the table of a core header
  int64_t bits_position;   // of the rows, as the file states it; 0 means right behind the table
};

Result<FileInfo> read_info(FileRef file) {
  const int64_t noted = file.position();
  FileHeader file_header;
  if (!read_whole(file, file_header)) return Error::kFileIo;
  if (file_header.type != kBitmapFileType) {
    file_header.bits_offset = 0;
    file.seek(noted, SeekFrom::kStart);
  }

  DibHeader header;
  if (!read_whole(file, header)) return Error::kFileIo;
  const bool is_core = header.size == kCoreHeaderBytes;
  if (!is_core && header.size != kHeaderBytes) return Error::kFormat;
  FileInfo info{.header = header, .table_bytes = palette_bytes(header), .table_has_triples = is_core, .bits_position = 0};
  if (is_core) {
    info.header = widened(header);
    file.seek(-static_cast<int64_t>(kHeaderBytes - kCoreHeaderBytes), SeekFrom::kCurrent);
  }
  // Offsets are signed; one of 2 GB or more is ignored.
  const bool has_offset = file_header.bits_offset != 0 && file_header.bits_offset <= INT32_MAX;
  if (has_offset) info.bits_position = noted + file_header.bits_offset;

  if (info.header.image_bytes == 0) {
    const auto computed = computed_image_bytes(info.header);
    if (!computed) return Error::kUnreported;
    info.header.image_bytes = *computed;
  }
  if (info.header.colors_used == 0) info.header.colors_used = implied_colors(info.header.depth);
  return info;
}

// A DIB with header and colour table, and room for `image_bytes` of rows, which are left unset. The file position is then at
// the rows.
Result<NewDib> read_up_to_rows(FileRef file, const FileInfo& info, ByteCount image_bytes) {
  NewDib dib = VOREL_TRY(NewDib::make(info.header, image_bytes, {.rows_at = RowsAt::kBehindTable}, OwnedDib::allocate_unset)
                             .or_error(Error::kUnreported));
  // Colours missing from the file stay black.
  file.read(dib.colors().data(), static_cast<size_t>(info.table_bytes.value()));
  if (info.table_has_triples) expand_triples(dib.colors());
  if (info.bits_position != 0) file.seek(info.bits_position, SeekFrom::kStart);
  return dib;
}

}  // namespace

Result<OwnedDib> read_dib_info(FileRef file) {
  if (!file.is_open()) return Error::kParameter;
  const FileInfo info = VOREL_TRY(read_info(file));
  return OwnedDib(VOREL_TRY(read_up_to_rows(file, info, 0)));
}

Result<OwnedDib> load_dib(const char* path) {
  const auto file = OwnedFile::open_for_reading(path);
  if (!file) return Error::kOpenFile;
  const FileInfo info = VOREL_TRY(read_info(*file));
  NewDib dib = VOREL_TRY(read_up_to_rows(*file, info, info.header.image_bytes));
  const std::span<uint8_t> rows = dib.image().first(info.header.image_bytes);
  const int64_t count = file->read(rows.data(), rows.size());
  std::ranges::fill(rows.subspan(static_cast<size_t>(std::max<int64_t>(count, 0))), uint8_t{0});  // missing from the file
  return OwnedDib(std::move(dib));
}

Result<bool> save_dib(const char* path, HGLOBAL handle) {
  if (handle == nullptr) return Error::kParameter;
  // Before the file is created: a dead handle must not destroy an existing file.
  const auto dib = LockedDib::lock(handle);
  if (!dib) return Error::kLock;
  const auto file = OwnedFile::create(path);
  if (!file) return Error::kOpenFile;

  const WaitCursor cursor;
  // A 12-byte header with a small picture is shorter than the newer header.
  DibHeader header{.size = 0, .planes = 0};
  std::memcpy(&header, dib->block().data(), std::min(dib->block().size(), sizeof header));
  const FileHeader file_header = file_header_for(header, dib->block().size());
  if (file->write(&file_header, sizeof file_header) == 0) return Error::kFileIo;
  if (file->write(dib->block().data(), dib->block().size()) == 0) return Error::kFileIo;
  return true;
}

}  // namespace vorel
