#include <algorithm>
#include <vector>

#include "common/byte_source.h"
#include "common/entry.h"
#include "pcx/pcx.h"

namespace codec {
namespace {

constexpr int kMostPixels = 65'535;
constexpr int kMostPlaneBytes = 65'534;

PcxColor stored(const Rgb& entry) { return {entry.red, entry.green, entry.blue}; }

uint16_t stored_dpi(int per_metre) { return static_cast<uint16_t>(std::min(nearest_dpi(per_metre), 65'535)); }

void append_runs(std::span<const uint8_t> plane, std::vector<uint8_t>& out) {
  for (size_t i = 0; i < plane.size();) {
    const uint8_t value = plane[i];
    const size_t begin = i;
    while (i < plane.size() && i - begin < kPcxLongestRun && plane[i] == value) ++i;
    if (i - begin > 1 || value >= kPcxRunMark) out.push_back(static_cast<uint8_t>(kPcxRunMark | (i - begin)));
    out.push_back(value);
  }
}

// Two 4-bit pixels: their bits of plane 0 in the lowest byte, of plane 1 in the next, and so on.
constexpr auto kGather = [] {
  std::array<uint32_t, 256> table{};
  for (uint32_t byte = 0; byte < 256; ++byte)
    for (uint32_t plane = 0; plane < 4; ++plane)
      table[byte] |= ((byte >> (4 + plane) & 1) << 1 | (byte >> plane & 1)) << (plane * 8);
  return table;
}();

void row_to_bit_planes(std::span<const uint8_t> row, size_t plane_bytes, std::span<uint8_t> line) {
  for (size_t i = 0; i < row.size() / 4; ++i) {
    uint32_t planes = 0;
    for (const uint8_t byte : row.subspan(i * 4, 4)) planes = planes << 2 | kGather[byte];
    for (size_t plane = 0; plane < 4; ++plane) line[plane * plane_bytes + i] = static_cast<uint8_t>(planes >> (plane * 8));
  }
}

void row_to_color_planes(std::span<const uint8_t> row, size_t width, size_t plane_bytes, std::span<uint8_t> line) {
  for (size_t x = 0; x < width; ++x)
    for (size_t plane = 0; plane < 3; ++plane) line[plane * plane_bytes + x] = row[x * 3 + 2 - plane];
}

// Zeroes a row behind its first `bits` bits.
void clear_padding(std::span<uint8_t> row, size_t bits) {
  if (bits % 8 != 0) row[bits / 8] &= static_cast<uint8_t>(0xFF00u >> bits % 8);
  std::ranges::fill(row.subspan((bits + 7) / 8), uint8_t{0});
}

}  // namespace

PcxWriter::PcxWriter(const SourceDib& dib) : dib_(dib) {
  const bool has_bit_planes = dib.depth() <= 4;
  header_.signature = PcxHeader::kSignature;
  header_.version = 5;
  header_.encoding = PcxHeader::kRunLength;
  header_.plane_depth = has_bit_planes ? 1 : 8;
  header_.planes = static_cast<uint8_t>(dib.depth() / header_.plane_depth);
  if (dib.width() > kMostPixels || dib.height() > kMostPixels) fail(IMG_E_DIB_SIZE);
  const int plane_bytes = (dib.width() * header_.plane_depth + 15) / 16 * 2;
  if (plane_bytes > kMostPlaneBytes) fail(IMG_E_DIB_SIZE);
  header_.plane_bytes = static_cast<uint16_t>(plane_bytes);
  header_.right = static_cast<uint16_t>(dib.width() - 1);
  header_.bottom = static_cast<uint16_t>(dib.height() - 1);
  header_.dpi_x = stored_dpi(dib.resolution().x);
  header_.dpi_y = stored_dpi(dib.resolution().y);
  header_.palette_kind = PcxHeader::kColorPalette;
  if (has_bit_planes) std::ranges::transform(dib.colors(), header_.colors.begin(), stored);
  if (has_bit_planes) suit_readers_without_tables();
}

// Many programs treat 0 as black and 1 as white in bi-level files, whatever the table says, and ignore an all-black table.
// If all colours are alike, pixels become 0, or at 1 bit 1 if they are bright.
void PcxWriter::suit_readers_without_tables() {
  const Colors& colors = dib_.colors();
  const bool are_alike = same_colors(colors, Colors(colors.size(), colors[0]));
  if (are_alike) kept_bits_ = 0;
  if (dib_.depth() != 1) return;
  const Rgb other = are_alike ? color(127, 127, 127) : colors[1];
  if (brightness_of(colors[0]) <= brightness_of(other)) return;
  inversion_ = 0xFF;
  std::swap(header_.colors[0], header_.colors[1]);
}

void PcxWriter::write(const OutputFile& file) const {
  file.write(bytes_of(header_));
  write_lines(file);
  if (dib_.depth() == 8) write_colors_of_8_bits(file);
}

void PcxWriter::write_lines(const OutputFile& file) const {
  const size_t width = static_cast<size_t>(dib_.width()), depth = static_cast<size_t>(dib_.depth());
  const size_t plane_bytes = header_.plane_bytes;
  std::vector<uint8_t> row, line(plane_bytes * header_.planes), runs;
  for (int y = 0; y < dib_.height(); ++y) {
    const auto source = dib_.row_from_top(y);
    row.assign(source.begin(), source.end());
    for (uint8_t& byte : row) byte = static_cast<uint8_t>((byte & kept_bits_) ^ inversion_);
    clear_padding(row, width * depth);
    if (depth == 24) {
      row_to_color_planes(row, width, plane_bytes, line);
    } else if (depth == 4) {
      row_to_bit_planes(row, plane_bytes, line);
    } else {
      std::ranges::copy(std::span(row).first(std::min(row.size(), line.size())), line.begin());
    }
    runs.clear();
    for (size_t plane = 0; plane < header_.planes; ++plane)
      append_runs(std::span(line).subspan(plane * plane_bytes, plane_bytes), runs);
    file.write(runs);
  }
}

void PcxWriter::write_colors_of_8_bits(const OutputFile& file) const {
  std::vector<uint8_t> table{kPcxTableMark};
  for (const Rgb& entry : dib_.colors()) table.insert(table.end(), {entry.red, entry.green, entry.blue});
  file.write(table);
}

}  // namespace codec
