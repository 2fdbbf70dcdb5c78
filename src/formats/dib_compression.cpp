#include "formats/dib_compression.h"

#include <algorithm>

#include "dib/open_dib.h"
#include "kernels/rle/rle.h"

namespace vorel::formats {
namespace {

// Codes begin where the pixels would.
constexpr LayoutRule kRule = {.rows_at = RowsAt::kBehindEveryValue};

bool has_picture(const DibHeader& header) { return header.size == kHeaderBytes && header.width >= 0 && header.height >= 0; }

bool is_compressible(const DibHeader& header) {
  return has_picture(header) && header.compression == Compression::kNone && (header.depth == 8 || header.depth == 4);
}

// Compressions without a depth of their own pass, and are read as 4-bit codes.
bool is_expandable(const DibHeader& header) {
  if (!has_picture(header) || header.image_bytes == 0) return false;
  switch (header.compression) {
    case Compression::kNone: return false;
    case Compression::kRle8: return header.depth == 8;
    case Compression::kRle4: return header.depth == 4;
    default: return true;
  }
}

// A new DIB with a header, the existing part of the source's colour table (the rest is zero), and room for its data.
Result<OwnedDib> with_table_of(const LockedDib& source, DibHeader header, ByteCount data_bytes) {
  const ByteCount table_end = Layout::of(header, kRule).offset;
  OwnedDib result = VOREL_TRY(OwnedDib::allocate(table_end + data_bytes).or_error(Error::kMemory));
  header.image_bytes = static_cast<uint32_t>(data_bytes.value());
  std::ranges::copy(source.part(0, table_end), result.bytes().begin());
  write_header(result.bytes(), header);
  return result;
}

// Writes the codes of a whole picture and returns their number of bytes.
Result<size_t> encode(const LockedDib& source, std::span<uint8_t> codes) {
  const DibHeader& header = source.header();
  const OpenDib opened = VOREL_TRY(OpenDib::open(source, kRule));
  // Rows without pixels have codes too.
  const ConstDibView picture = pixels_at(std::span<const uint8_t>(opened.bytes()), opened.layout().offset, header);

  // The bytes behind the last row count too, and may be missing even if the picture is complete.
  if (header.height == 0) return kernels::rle().encode(picture, nullptr, codes);
  const auto last_row = static_cast<size_t>(picture.row(header.height - 1).data() - opened.bytes().data());
  const ByteCount looked_at = ByteCount(row_bytes(header.depth, header.width)) + kernels::kBytesBehindRow;
  const auto last = VOREL_TRY(or_error(CompleteBytes::of(source.part(last_row, looked_at), looked_at), Error::kMemory));
  return kernels::rle().encode(picture, last.bytes().data(), codes);
}

size_t data_offset(const DibHeader& header) { return static_cast<size_t>(Layout::of(header, kRule).offset.value()); }

// The rows that codes are drawn on, limited to the pixels in their stride: below 4 bits, 4-bit codes would run from one row
// into the next.
DibView rows_of(const OwnedDib& result, const DibHeader& source) {
  const int depth = source.compression == Compression::kRle8 ? 8 : 4;
  const uint64_t stride = row_stride(source.depth, source.width).value();
  const int64_t room = static_cast<int64_t>(stride * 8) / depth;
  return {result.bytes().data() + data_offset(source), static_cast<std::ptrdiff_t>(stride),
          static_cast<int>(std::min<int64_t>(source.width, room)), source.height, depth};
}

}  // namespace

Result<OwnedDib> compressed(const LockedDib& source) {
  if (!is_compressible(source.header())) return Error::kParameter;
  DibHeader header = source.header();
  const ByteCount room = kernels::most_code_bytes(header.depth, header.width, header.height);
  const auto buffer = VOREL_TRY(or_error(ZeroedBuffer::allocate(room), Error::kMemory));
  const size_t code_bytes = VOREL_TRY(encode(source, buffer.bytes()));

  header.compression = header.depth == 8 ? Compression::kRle8 : Compression::kRle4;
  OwnedDib result = VOREL_TRY(with_table_of(source, header, code_bytes));
  std::ranges::copy(buffer.bytes().first(code_bytes),
                    result.bytes().begin() + static_cast<std::ptrdiff_t>(data_offset(header)));
  return result;
}

Result<OwnedDib> expanded(const LockedDib& source) {
  if (!is_expandable(source.header())) return Error::kParameter;
  DibHeader header = source.header();
  header.compression = Compression::kNone;
  OwnedDib result = VOREL_TRY(with_table_of(source, header, rows_bytes(header)));
  // The codes end at the end of the block, not by biSizeImage: they mark the end of the bitmap themselves.
  kernels::rle().decode(source.part(data_offset(header), source.block().size()), rows_of(result, source.header()));
  return result;
}

}  // namespace vorel::formats
