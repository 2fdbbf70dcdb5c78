#include "dib/bitmap_file.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <span>

#include "core/header.h"
#include "dib/packed_dib.h"
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

// The image size that a file's header leaves out. It is an unsigned number: for a top-down picture it comes out as 2^32
// minus the picture's size, more than any block holds, so that such a file loads only if it states its size. None for a
// negative width and for sizes that do not fit.
std::optional<uint32_t> computed_image_bytes(const DibHeader& header) {
  if (header.width < 0) return std::nullopt;
  const auto height = static_cast<uint32_t>(header.height);
  const uint32_t rows = header.height < 0 ? 0 - height : height;
  const ByteCount bytes = row_stride(header.depth, header.width) * rows;
  if (bytes > ByteCount(std::numeric_limits<uint32_t>::max())) return std::nullopt;
  const auto value = static_cast<uint32_t>(bytes.value());
  return header.height < 0 ? 0 - value : value;
}

// Turns a table of triples, read to the table's start, into one of quads in the same place. The last entry goes first: a
// quad never covers a triple that is still to be read.
void expand_triples(std::span<uint8_t> table) {
  for (size_t i = table.size() / sizeof(Rgb); i-- > 0;) {
    RgbTriple triple;
    std::memcpy(&triple, table.data() + i * sizeof triple, sizeof triple);
    const Rgb color{triple.blue, triple.green, triple.red, 0};
    std::memcpy(table.data() + i * sizeof color, &color, sizeof color);
  }
}

FileHeader file_header_for(const DibHeader& dib, size_t block_bytes) {
  return {.type = kBitmapFileType,
          .file_bytes = static_cast<uint32_t>(block_bytes + kFileHeaderBytes),
          .reserved1 = 0,
          .reserved2 = 0,
          .bits_offset = static_cast<uint32_t>((kFileHeaderBytes + bits_offset(dib)).value())};
}

// What a file says of its picture in front of the colour table, the missing counts filled in.
struct FileInfo {
  DibHeader header;
  uint32_t table_colors;   // entries in the file
  ByteCount table_bytes;   // their size in the file
  bool table_has_triples;  // as core headers have them
  int64_t bits_position;   // where the file says that the rows begin; 0: right behind the table
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
  FileInfo info{.header = header,
                .table_colors = DIBNumColors(header),
                .table_bytes = palette_bytes(header),
                .table_has_triples = is_core,
                .bits_position = 0};
  if (is_core) {
    info.header = widened(header);
    file.seek(-static_cast<int64_t>(kHeaderBytes - kCoreHeaderBytes), SeekFrom::kCurrent);
  }
  // Offsets are signed: one of 2 GB or more leads nowhere.
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

// A block with header and colour table, and room for so many bytes of pixels; the file then stands at these.
Result<OwnedDib> read_up_to_rows(FileRef file, const FileInfo& info, ByteCount pixels) {
  const ByteCount table_bytes = ByteCount(info.table_colors) * sizeof(Rgb);
  auto dib = OwnedDib::allocate(kHeaderBytes + table_bytes + pixels);
  if (!dib) return Error::kUnreported;
  write_header(dib->bytes(), info.header);
  const std::span<uint8_t> table = dib->bytes().subspan(kHeaderBytes, static_cast<size_t>(table_bytes.value()));
  file.read(table.data(), static_cast<size_t>(info.table_bytes.value()));  // colours the file is too short for stay black
  if (info.table_has_triples) expand_triples(table);
  if (info.bits_position != 0) file.seek(info.bits_position, SeekFrom::kStart);
  return dib;
}

}  // namespace

Result<OwnedDib> read_dib_info(FileRef file) {
  if (!file.is_open()) return Error::kParameter;
  const auto info = read_info(file);
  if (!info) return info.error();
  return read_up_to_rows(file, *info, 0);
}

Result<OwnedDib> load_dib(const char* path) {
  const auto file = OwnedFile::open_for_reading(path);
  if (!file) return Error::kOpenFile;
  const auto info = read_info(*file);
  if (!info) return info.error();
  auto dib = read_up_to_rows(*file, *info, info->header.image_bytes);
  if (!dib) return dib.error();
  const auto rows_begin = static_cast<size_t>(bits_offset(info->header).value());
  const std::span<uint8_t> pixels = dib->bytes().subspan(rows_begin, info->header.image_bytes);
  file->read(pixels.data(), pixels.size());  // rows the file is too short for stay zero
  return dib;
}

Result<bool> save_dib(const char* path, HGLOBAL handle) {
  if (handle == nullptr) return Error::kParameter;
  // Looked at before the file is created, so that a dead handle does not cost the file that is there.
  const auto dib = LockedDib::lock(handle);
  if (!dib) return Error::kLock;
  if (!dib->has_header()) return Error::kParameter;
  const auto file = OwnedFile::create(path);
  if (!file) return Error::kOpenFile;

  const WaitCursor cursor;
  const FileHeader file_header = file_header_for(dib->header(), dib->block().size());
  if (file->write(&file_header, sizeof file_header) == 0) return Error::kFileIo;
  if (file->write(dib->block().data(), dib->block().size()) == 0) return Error::kFileIo;
  return true;
}

}  // namespace vorel
