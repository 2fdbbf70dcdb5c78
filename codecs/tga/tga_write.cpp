#include <algorithm>
#include <limits>

#include "common/byte_source.h"
#include "common/entry.h"
#include "tga/tga.h"

namespace codec {
namespace {

constexpr int kMostPixels = std::numeric_limits<uint16_t>::max();

// The number of equal pixels from `at` on, at most a packet's worth.
size_t run_at(std::span<const uint8_t> row, size_t at, size_t pixel_bytes) {
  const auto first = row.subspan(at, pixel_bytes);
  size_t count = 1;
  for (at += pixel_bytes; at < row.size() && count < kTgaLongestPacket; at += pixel_bytes, ++count)
    if (!std::ranges::equal(row.subspan(at, pixel_bytes), first)) break;
  return count;
}

// The number of pixels from `at` on for a literal packet.
size_t literals_at(std::span<const uint8_t> row, size_t at, size_t pixel_bytes, size_t shortest_run) {
  size_t count = 0;
  while (at < row.size() && count < kTgaLongestPacket && run_at(row, at, pixel_bytes) < shortest_run) {
    at += pixel_bytes;
    ++count;
  }
  return count;
}

// Packets end with their row, as the format's second version requires.
void append_packets(std::span<const uint8_t> row, size_t pixel_bytes, std::vector<uint8_t>& out) {
  const size_t shortest_run = pixel_bytes == 1 ? 3 : 2;  // shorter ones cost more than they save
  for (size_t at = 0; at < row.size();) {
    const size_t literals = literals_at(row, at, pixel_bytes, shortest_run);
    const size_t pixels = literals != 0 ? literals : run_at(row, at, pixel_bytes);
    out.push_back(static_cast<uint8_t>((literals != 0 ? 0 : kTgaRunMark) | (pixels - 1)));
    const auto stored = row.subspan(at, (literals != 0 ? literals : 1) * pixel_bytes);
    out.insert(out.end(), stored.begin(), stored.end());
    at += pixels * pixel_bytes;
  }
}

}  // namespace

TgaWriter::TgaWriter(const SourceDib& dib, bool is_compressed) : dib_(dib) {
  if (dib.width() > kMostPixels || dib.height() > kMostPixels) fail(IMG_E_DIB_SIZE);
  const bool is_gray = dib.depth() == 8 && is_gray_ramp(dib);
  const bool is_indexed = dib.depth() <= 8 && !is_gray;
  const int kind = is_indexed ? TgaHeader::kIndexed : is_gray ? TgaHeader::kGray : TgaHeader::kColor;
  // Format detection recognises packets together with a map as a metafile.
  const bool has_packets = is_compressed && !is_indexed;
  header_.kind = static_cast<uint8_t>(kind | (has_packets ? TgaHeader::kRunLength : 0));
  header_.has_map = is_indexed ? 1 : 0;
  header_.map_count = static_cast<uint16_t>(is_indexed ? dib.colors().size() : 0);
  header_.map_depth = is_indexed ? 24 : 0;
  header_.width = static_cast<uint16_t>(dib.width());
  header_.height = static_cast<uint16_t>(dib.height());
  header_.depth = dib.depth() == 24 ? 24 : 8;
}

void TgaWriter::write(const OutputFile& file) const {
  file.write(bytes_of(header_));
  if (header_.has_map == 1) write_map(file);
  write_rows(file);
}

void TgaWriter::write_map(const OutputFile& file) const {
  std::vector<uint8_t> map;
  for (const Rgb& entry : dib_.colors()) map.insert(map.end(), {entry.blue, entry.green, entry.red});
  file.write(map);
}

void TgaWriter::write_rows(const OutputFile& file) const {
  const size_t pixel_bytes = header_.depth / 8u;
  std::vector<uint8_t> row(header_.width * pixel_bytes), packets;
  for (int y = dib_.height() - 1; y >= 0; --y) {
    unpack_indices(dib_.row_from_top(y), std::min(dib_.depth(), 8), row);  // 24-bit pixels are copied as bytes, like indices
    packets.clear();
    if (header_.is_compressed()) append_packets(row, pixel_bytes, packets);
    file.write(header_.is_compressed() ? packets : row);
  }
}

void write_tga_footer(const OutputFile& file) {
  file.write(bytes_of(TgaFooter{.extension = 0, .developer_area = 0, .signature = TgaFooter::kSignature}));
}

}  // namespace codec
