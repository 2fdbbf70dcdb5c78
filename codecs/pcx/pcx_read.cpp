#include <algorithm>
#include <cstring>
#include <vector>

#include "common/byte_source.h"
#include "common/entry.h"
#include "pcx/pcx.h"

namespace codec {
namespace {

constexpr int width_of(const PcxHeader& header) { return header.right - header.left + 1; }
constexpr int height_of(const PcxHeader& header) { return header.bottom - header.top + 1; }

// The depth of the resulting DIB; 0 for an invalid combination of planes.
int dib_depth(const PcxHeader& header) {
  struct Planes {
    int depth, count, dib_depth;
  };
  static constexpr Planes kKnown[] = {{1, 1, 1}, {1, 2, 4}, {1, 3, 4},  {1, 4, 4}, {2, 1, 4},
                                      {4, 1, 4}, {8, 1, 8}, {8, 3, 24}, {8, 4, 24}};
  for (const Planes& known : kKnown)
    if (known.depth == header.plane_depth && known.count == header.planes) return known.dib_depth;
  return 0;
}

bool is_sound(const PcxHeader& header) {
  return header.signature == PcxHeader::kSignature && header.version <= 5 && header.version != 1 &&
         header.encoding <= PcxHeader::kRunLength && dib_depth(header) != 0 && width_of(header) > 0 &&
         height_of(header) > 0 && header.plane_bytes >= (width_of(header) * header.plane_depth + 7) / 8;
}

PcxHeader take_sound_header(ByteSource& source) {
  const auto header = source.take_header<PcxHeader>();
  if (!is_sound(header)) fail(IMG_E_FORMAT);
  return header;
}

Colors colors_of(std::span<const PcxColor> stored) {
  Colors colors;
  for (const PcxColor& entry : stored) colors.push_back(color(entry.red, entry.green, entry.blue));
  return colors;
}

bool is_black(const PcxColor& entry) { return entry.red == 0 && entry.green == 0 && entry.blue == 0; }

// Versions 0 and 3 have no table, and an all-black table counts as none: the picture is marked as grey, or has the colours
// of the display adapters that the format was made for, in the order of their planes (blue, green, red, bright).
Colors sixteen_colors(const PcxHeader& header) {
  static constexpr PcxColor kStandard[] = {{0, 0, 0},     {0, 0, 170},    {0, 170, 0},    {0, 170, 170},
                                           {170, 0, 0},   {170, 0, 170},  {170, 85, 0},   {170, 170, 170},
                                           {85, 85, 85},  {85, 85, 255},  {85, 255, 85},  {85, 255, 255},
                                           {255, 85, 85}, {255, 85, 255}, {255, 255, 85}, {255, 255, 255}};
  const bool has_table = header.version != 0 && header.version != 3 && !std::ranges::all_of(header.colors, is_black);
  if (has_table) return colors_of(header.colors);
  const bool is_gray = header.palette_kind == PcxHeader::kGrayPalette;
  return is_gray ? gray_ramp(header.plane_depth * header.planes) : colors_of(kStandard);
}

// Many programs leave an unrelated table in bi-level files, or none. A table that ends after two colours is intended;
// otherwise 0 is black and 1 white.
Colors two_colors(const PcxHeader& header) {
  const std::span<const PcxColor> table = header.colors;
  const auto two = table.first(2);
  const bool is_meant = !std::ranges::all_of(two, is_black) && std::ranges::all_of(table.subspan(2), is_black);
  return is_meant ? colors_of(two) : gray_ramp(1);
}

// Some programs store the picture's own size there.
Resolution resolution_of(const PcxHeader& header) {
  const bool is_size = header.dpi_x == width_of(header) && header.dpi_y == height_of(header);
  return is_size && header.dpi_x != header.dpi_y ? Resolution{} : from_dpi(header.dpi_x, header.dpi_y);
}

bool has_alpha(const PcxHeader& header) { return header.plane_depth == 8 && header.planes == 4; }

Description description_of(const PcxHeader& header) {
  Description picture{.width = width_of(header),
                      .height = height_of(header),
                      .depth = dib_depth(header),
                      .resolution = resolution_of(header),
                      .has_opacity = has_alpha(header)};
  if (picture.depth == 1) picture.colors = two_colors(header);
  if (picture.depth == 4) picture.colors = sixteen_colors(header);
  return picture;
}

// The bytes of all lines in sequence. Runs may cross planes and lines.
class LineBytes {
 public:
  LineBytes(ByteSource source, bool is_compressed) : source_(source), is_compressed_(is_compressed) {}

  bool can_give(uint64_t bytes) const {
    const uint64_t stored = source_.rest().size();
    return bytes <= (is_compressed_ ? stored / 2 * kPcxLongestRun + 1 : stored);
  }

  void read(std::span<uint8_t> line) {
    if (!is_compressed_) {
      std::ranges::copy(source_.take(line.size()), line.begin());
      return;
    }
    for (size_t done = 0; done < line.size();) {
      if (run_ == 0) next_run();
      const size_t count = std::min(run_, line.size() - done);
      std::ranges::fill(line.subspan(done, count), value_);
      done += count;
      run_ -= count;
    }
  }

  std::span<const uint8_t> rest() const { return source_.rest(); }

 private:
  void next_run() {
    value_ = source_.take_byte();
    run_ = 1;
    if (value_ < kPcxRunMark) return;
    run_ = value_ - kPcxRunMark;
    value_ = source_.take_byte();
  }

  ByteSource source_;
  bool is_compressed_;
  size_t run_ = 0;
  uint8_t value_ = 0;
};

// Eight bits as the lowest bits of eight 4-bit pixels, in memory order.
constexpr auto kSpread = [] {
  std::array<uint32_t, 256> table{};
  for (uint32_t byte = 0; byte < 256; ++byte)
    for (uint32_t x = 0; x < 8; ++x) table[byte] |= (byte >> (7 - x) & 1) << (x / 2 * 8 + (x % 2 == 0 ? 4 : 0));
  return table;
}();

// A line of a picture as stored; its planes become a DIB's row.
struct Line {
  const PcxHeader& header;
  std::span<const uint8_t> bytes;

  std::span<const uint8_t> plane(size_t index) const {
    return bytes.subspan(index * header.plane_bytes, header.plane_bytes);
  }
  size_t width() const { return static_cast<size_t>(width_of(header)); }
};

void bit_planes_to_row(const Line& line, std::span<uint8_t> row) {
  for (size_t i = 0; i < row.size() / sizeof(uint32_t); ++i) {
    uint32_t pixels = 0;
    for (size_t plane = 0; plane < line.header.planes; ++plane) pixels |= kSpread[line.plane(plane)[i]] << plane;
    std::memcpy(&row[i * sizeof pixels], &pixels, sizeof pixels);
  }
}

void two_bits_to_row(const Line& line, std::span<uint8_t> row) {
  std::vector<uint8_t> indices(line.width());
  unpack_indices(line.bytes, 2, indices);
  pack_indices(indices, 4, row);
}

void color_planes_to_row(const Line& line, std::span<uint8_t> row) {
  const auto red = line.plane(0), green = line.plane(1), blue = line.plane(2);
  for (size_t x = 0; x < line.width(); ++x) {
    row[x * 3] = blue[x];
    row[x * 3 + 1] = green[x];
    row[x * 3 + 2] = red[x];
  }
  if (!has_alpha(line.header)) return;
  const auto alpha = line.plane(3);
  for (size_t i = 0; i < line.width() * 3; ++i) row[i] = over_white(row[i], alpha[i / 3]);
}

void line_to_row(const Line& line, std::span<uint8_t> row) {
  if (line.header.plane_depth == 8 && line.header.planes > 1) return color_planes_to_row(line, row);
  if (line.header.plane_depth == 2) return two_bits_to_row(line, row);
  if (line.header.planes > 1) return bit_planes_to_row(line, row);
  std::ranges::copy(line.bytes.first((line.width() * line.header.plane_depth + 7) / 8), row.begin());
}

// The table follows the pixels directly or, with other bytes between, ends the file. Some tables contain the mark, so the
// first place wins where both have it. Version 5 pictures of 8 bits that are marked as coloured have a table; others without
// one are grey.
Colors colors_after_pixels(const PcxHeader& header, std::span<const uint8_t> rest) {
  constexpr size_t kColors = 256, kBytes = 1 + kColors * sizeof(PcxColor);
  std::array<PcxColor, kColors> table;
  for (const size_t at : {size_t{0}, rest.size() - std::min(rest.size(), kBytes)}) {
    if (rest.size() - at < kBytes || rest[at] != kPcxTableMark) continue;
    std::memcpy(table.data(), &rest[at + 1], sizeof table);
    return colors_of(table);
  }
  const bool is_cut_off = !rest.empty() && rest[0] == kPcxTableMark;
  if (is_cut_off || (header.version == 5 && header.palette_kind == PcxHeader::kColorPalette)) fail(IMG_E_FORMAT);
  return gray_ramp(8);
}

}  // namespace

void check_pcx_start(std::span<const uint8_t> start) {
  ByteSource source(start);
  take_sound_header(source);
}

HGLOBAL read_pcx(std::span<const uint8_t> file) {
  ByteSource source(file);
  const PcxHeader header = take_sound_header(source);
  const Description picture = description_of(header);
  LineBytes lines(source, header.encoding == PcxHeader::kRunLength);
  std::vector<uint8_t> bytes(size_t{header.planes} * header.plane_bytes);
  // Whatever the header claims, no memory is allocated without enough pixels in the file.
  if (!lines.can_give(uint64_t{bytes.size()} * static_cast<uint64_t>(picture.height))) fail(IMG_E_FORMAT);

  LoadedDib dib(picture);
  for (int y = 0; y < dib.height(); ++y) {
    lines.read(bytes);
    line_to_row({header, bytes}, dib.row_from_top(y));
  }
  if (picture.depth == 8) dib.set_colors(colors_after_pixels(header, lines.rest()));
  return dib.release();
}

}  // namespace codec
