#include "formats/dib_compression.h"

#include <algorithm>

#include "kernels/rle/rle.h"

namespace vorel::formats {
namespace {

// Bytes to the end of a full colour table: where pixels and codes begin. At depths of 32 and above that exceeds any block.
ByteCount data_offset(const DibHeader& header) {
  const ByteCount colors = header.depth < 32 ? ByteCount(uint64_t{1} << header.depth) : ByteCount(UINT64_MAX);
  return kHeaderBytes + colors * sizeof(Rgb);
}

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
  const ByteCount table_end = data_offset(header);
  auto result = OwnedDib::allocate(table_end + data_bytes);
  if (!result) return Error::kMemory;
  header.image_bytes = static_cast<uint32_t>(data_bytes.value());
  std::ranges::copy(source.part(0, table_end), result->bytes().begin());
  write_header(result->bytes(), header);
  return result;
}

// Writes the codes of a whole picture and returns their number of bytes.
Result<size_t> encode(const LockedDib& source, std::span<uint8_t> codes) {
  const DibHeader& header = source.header();
  const auto begin = static_cast<size_t>(data_offset(header).value());
  const auto whole = source.complete(begin + rows_bytes(header));
  if (!whole) return Error::kMemory;
  const auto stride = static_cast<size_t>(row_stride(header.depth, header.width).value());
  const ConstDibView picture(whole->bytes().data() + begin, static_cast<std::ptrdiff_t>(stride), header.width, header.height,
                             header.depth);

  // The bytes behind the last row count too, and may be missing even if the picture is complete.
  if (header.height == 0) return kernels::rle().encode(picture, nullptr, codes);
  const size_t last_row = begin + stride * static_cast<size_t>(header.height - 1);
  const ByteCount looked_at = ByteCount(row_bytes(header.depth, header.width)) + kernels::kBytesBehindRow;
  const auto last = CompleteBytes::of(source.part(last_row, looked_at), looked_at);
  if (!last) return Error::kMemory;
  return kernels::rle().encode(picture, last->bytes().data(), codes);
}

// Where the pixels or codes of a result begin.
uint8_t* data_of(const OwnedDib& result, const DibHeader& header) {
  return result.bytes().data() + static_cast<size_t>(data_offset(header).value());
}

// The rows that codes are drawn on, limited to the pixels in their stride: below 4 bits, 4-bit codes would run from one row
// into the next.
DibView rows_of(const OwnedDib& result, const DibHeader& source) {
  const int depth = source.compression == Compression::kRle8 ? 8 : 4;
  const uint64_t stride = row_stride(source.depth, source.width).value();
  const int64_t room = static_cast<int64_t>(stride * 8) / depth;
  return {data_of(result, source), static_cast<std::ptrdiff_t>(stride),
          static_cast<int>(std::min<int64_t>(source.width, room)), source.height, depth};
}

}  // namespace

Result<OwnedDib> compressed(const LockedDib& source) {
  if (!is_compressible(source.header())) return Error::kParameter;
  DibHeader header = source.header();
  const auto buffer = ZeroedBuffer::allocate(kernels::most_code_bytes(header.depth, header.width, header.height));
  if (!buffer) return Error::kMemory;
  const auto code_bytes = encode(source, buffer->bytes());
  if (!code_bytes) return code_bytes.error();

  header.compression = header.depth == 8 ? Compression::kRle8 : Compression::kRle4;
  auto result = with_table_of(source, header, *code_bytes);
  if (!result) return result.error();
  std::ranges::copy(buffer->bytes().first(*code_bytes), data_of(*result, header));
  return result;
}

Result<OwnedDib> expanded(const LockedDib& source) {
  if (!is_expandable(source.header())) return Error::kParameter;
  DibHeader header = source.header();
  header.compression = Compression::kNone;
  auto result = with_table_of(source, header, rows_bytes(header));
  if (!result) return result.error();
  // The codes end at the end of the block, not by biSizeImage: they mark the end of the bitmap themselves.
  const auto begin = static_cast<size_t>(data_offset(header).value());
  kernels::rle().decode(source.part(begin, source.block().size()), rows_of(*result, source.header()));
  return result;
}

}  // namespace vorel::formats
