#include "dib/bitmap_file.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <span>

#include "dib/header.h"
#include "dib/packed_dib.h"
#include "platform/user.h"

namespace vorel {
namespace {

template <class Struct>
bool read_whole(FileRef file, Struct& into) {
  return file.read(&into, sizeof into) == static_cast<int64_t>(sizeof into);
}

DibHeader widened(const CoreHeader& core) {
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

}  // namespace

Result<OwnedBlock> read_dib_info(FileRef file) {
  if (!file.is_open()) return Error::kParameter;

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
  const uint32_t colors = color_count(header);
  const ByteCount stored_table = palette_bytes(header);
  if (is_core) {
    CoreHeader core;
    std::memcpy(&core, &header, sizeof core);
    header = widened(core);
    file.seek(-static_cast<int64_t>(kHeaderBytes - kCoreHeaderBytes), SeekFrom::kCurrent);
  }

  if (header.image_bytes == 0) {
    const auto computed = computed_image_bytes(header);
    if (!computed) return Error::kUnreported;
    header.image_bytes = *computed;
  }
  if (header.colors_used == 0) header.colors_used = implied_colors(header.depth);

  auto dib = OwnedBlock::allocate(kHeaderBytes + ByteCount(colors) * sizeof(Rgb));
  if (!dib) return Error::kUnreported;
  const auto lock = LockedBlock::lock(dib->get());
  if (!lock) return Error::kUnreported;
  write_header(lock->bytes(), header);
  const std::span<uint8_t> table = lock->bytes().subspan(kHeaderBytes);
  file.read(table.data(), static_cast<size_t>(stored_table.value()));  // colours the file is too short for stay black
  if (is_core) expand_triples(table);

  if (file_header.bits_offset != 0) file.seek(noted + file_header.bits_offset, SeekFrom::kStart);
  return std::move(*dib);
}

Result<OwnedBlock> load_dib(const char* path) {
  const auto file = OwnedFile::open_for_reading(path);
  if (!file) return Error::kOpenFile;
  auto dib = read_dib_info(*file);
  if (!dib) return dib.error();

  DibHeader header;
  {
    const auto lock = LockedDib::lock(dib->get());
    if (!lock) return Error::kUnreported;
    header = lock->header();
  }
  if (!dib->resize(bits_offset(header) + header.image_bytes)) return Error::kUnreported;
  const auto lock = LockedDib::lock(dib->get());
  if (!lock) return Error::kUnreported;
  const std::span<uint8_t> pixels = lock->part(static_cast<size_t>(bits_offset(header).value()), header.image_bytes);
  file->read(pixels.data(), pixels.size());  // rows the file is too short for stay zero
  return std::move(*dib);
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
