#include "common/bitmap_file.h"

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cstring>
#include <fmt/format.h>
#include <vector>

#include "common/problem.h"

namespace vorel::programs {
namespace {

constexpr uint16_t kArrayType = 0x4142;     // "BA"
constexpr uint64_t kArrayHeaderBytes = 14;  // in front of the first bitmap of an array
constexpr size_t kMaskBytes = sizeof(uint32_t);
constexpr uint32_t kBehindMasks = 52;  // headers of so many bytes and more hold the masks themselves
constexpr uint32_t kLongestHeader = 124;
constexpr uint32_t kHeaderSizes[] = {kCoreHeaderBytes, 16, kHeaderBytes, kBehindMasks, 56, 64, 108, kLongestHeader};
constexpr uint32_t kAlphaMasks = 6;  // a compression: four masks behind 40 bytes

[[noreturn]] void fail(const std::string& text) { throw Problem(Fault::kFormat, text); }

[[noreturn]] void fail_as_damaged(const std::string& what) { fail(what + "; the file is damaged, get another copy of it"); }

// The bits of one colour in a pixel.
class Mask {
 public:
  explicit Mask(uint32_t bits = 0) : bits_(bits), shift_(bits == 0 ? 0 : std::countr_zero(bits)), most_(bits >> shift_) {}

  bool is_one_run() const { return (most_ & (most_ + 1)) == 0; }

  // Fewer than eight bits are repeated, more are rounded.
  uint8_t level_of(uint32_t pixel) const {
    const uint64_t value = (pixel & bits_) >> shift_;
    const int width = std::bit_width(most_);
    if (width == 0) return 0;
    if (width >= 8) return static_cast<uint8_t>((value * 255 + most_ / 2) / most_);
    uint32_t level = 0;
    for (int at = 8 - width; at > -width; at -= width) level |= static_cast<uint32_t>(at >= 0 ? value << at : value >> -at);
    return static_cast<uint8_t>(level);
  }

 private:
  uint32_t bits_;
  int shift_;
  uint32_t most_;
};

// Where everything of a bitmap is.
struct BitmapLayout {
  BitmapFacts facts;
  std::vector<Rgb> colors;
  std::array<Mask, 3> masks;  // red, green, blue
  uint64_t pixels_at = 0;     // bytes from the start
  uint64_t pixel_bytes = 0;   // rows, or codes

  const DibHeader& header() const { return facts.header; }
};

class Reader {
 public:
  Reader(std::istream& stream, uint64_t bytes) : stream_(stream), bytes_(bytes) {}

  // As many bytes as there are.
  size_t read(uint64_t at, void* to, size_t count) {
    stream_.clear();
    stream_.seekg(static_cast<std::streamoff>(at));
    stream_.read(static_cast<char*>(to), static_cast<std::streamsize>(count));
    return static_cast<size_t>(stream_.gcount());
  }
  // The rest stays zero.
  template <class Value>
  Value value_at(uint64_t at) {
    Value value{};
    read(at, &value, sizeof value);
    return value;
  }
  uint64_t bytes() const { return bytes_; }

 private:
  std::istream& stream_;
  uint64_t bytes_;
};

bool is_run_length(const DibHeader& header) {
  return header.compression == Compression::kRle8 || header.compression == Compression::kRle4;
}

const char* compression_name(const DibHeader& header) {
  switch (header.compression) {
    case Compression::kRle8: return "run-length, 8 bits";
    case Compression::kRle4: return "run-length, 4 bits";
    case Compression::kBitFields: return "none, colour masks";
    default: return "none";
  }
}

std::optional<uint32_t> color_count(const BitmapFacts& facts, size_t table) {
  if (facts.header.depth <= 8) return static_cast<uint32_t>(table);
  if (facts.has_masks) return std::nullopt;
  return facts.header.depth == 16 ? 1u << 15 : 1u << 24;
}

void check_header(const DibHeader& header, uint32_t header_bytes) {
  const int depth = header.depth;
  if (header.width <= 0 || header.height == 0 || header.height == INT_MIN)
    fail_as_damaged(fmt::format("a picture of {} x {} pixels is none", header.width, header.height));
  if (!is_stored_depth(depth)) fail_as_damaged(fmt::format("there are no pixels of {} bits", depth));
  if (header.planes != 1) fail_as_damaged(fmt::format("the header counts {} colour planes, not 1", header.planes));
  // Two sizes of header belong to a family that numbers its compressions another way from 3 on.
  const bool is_other_family = header_bytes == 16 || header_bytes == 64;
  const bool suits_depth =
      header.compression == Compression::kNone || (header.compression == Compression::kRle8 && depth == 8) ||
      (header.compression == Compression::kRle4 && depth == 4) ||
      (header.compression == Compression::kBitFields && (depth == 16 || depth == 32) && !is_other_family);
  if (!suits_depth) {
    fail(fmt::format("compression number {} with {} bits per pixel is not supported; save the picture uncompressed",
                     static_cast<uint32_t>(header.compression), depth));
  }
}

// A header of any size as one of 40 bytes. What a short one lacks is zero.
DibHeader read_dib_header(Reader& reader, uint64_t at, uint32_t header_bytes) {
  DibHeader header{};
  if (header_bytes == kCoreHeaderBytes) {
    const auto core = reader.value_at<CoreHeader>(at);
    header.width = core.width;
    header.height = core.height;
    header.planes = core.planes;
    header.depth = core.depth;
  } else {
    reader.read(at, &header, std::min(header_bytes, kHeaderBytes));
  }
  header.size = kHeaderBytes;
  if (header.compression == Compression{kAlphaMasks}) header.compression = Compression::kBitFields;
  return header;
}

struct Table {
  uint64_t at = 0, entry_bytes = 0, entries = 0;
  uint64_t end() const { return at + entry_bytes * entries; }
};

void read_colors(Reader& reader, const Table& table, BitmapLayout& layout) {
  std::vector<uint8_t> bytes(static_cast<size_t>(table.entry_bytes * table.entries));
  reader.read(table.at, bytes.data(), bytes.size());
  for (size_t i = 0; i < table.entries; ++i) {
    const uint8_t* const entry = bytes.data() + i * table.entry_bytes;
    layout.colors.push_back({entry[0], entry[1], entry[2], table.entry_bytes == sizeof(Rgb) ? entry[3] : uint8_t{0}});
  }
}

// Compares where the pixels lie with where the file ends.
void find_pixels(const Reader& reader, uint64_t stated_at, const Table& table, BitmapLayout& layout) {
  const DibHeader& header = layout.header();
  layout.pixels_at = stated_at != 0 ? stated_at : table.end();
  if (layout.pixels_at < table.end()) fail_as_damaged("the pixels begin before the header and colour table end");
  const uint64_t whole = plain_bytes(header).value(), stated = header.image_bytes;
  const uint64_t there = reader.bytes() > layout.pixels_at ? reader.bytes() - layout.pixels_at : 0;
  if (is_run_length(header)) {
    layout.pixel_bytes = stated != 0 ? stated : std::max<uint64_t>(there, 1);
  } else {
    layout.pixel_bytes = whole;
    if (stated != 0 && stated < whole)
      fail_as_damaged(fmt::format("the header states {} bytes of pixels where the picture has {}", stated, whole));
  }
  if (const uint64_t claimed = std::max(layout.pixel_bytes, stated); claimed > there) {
    fail(fmt::format("the file ends {} bytes before the picture does; get a complete copy of it", claimed - there));
  }
}

BitmapLayout layout_of(Reader& reader) {
  const bool is_array = reader.value_at<uint16_t>(0) == kArrayType;
  const uint64_t start = is_array ? kArrayHeaderBytes : 0;
  auto file = reader.value_at<FileHeader>(start);
  const bool has_file_header = file.type == kBitmapFileType;
  if (!has_file_header) file = {};
  const uint64_t at = start + (has_file_header ? kFileHeaderBytes : 0);
  const auto header_bytes = reader.value_at<uint32_t>(at);
  if (std::ranges::find(kHeaderSizes, header_bytes) == std::end(kHeaderSizes)) {
    fail(fmt::format("bitmaps with a header of {} bytes are not supported; save the picture anew", header_bytes));
  }
  if (at + header_bytes > reader.bytes()) fail("the file ends inside its header; get a complete copy of it");

  BitmapLayout layout;
  layout.facts.header = read_dib_header(reader, at, header_bytes);
  DibHeader& header = layout.facts.header;
  const auto stated_compression = reader.value_at<uint32_t>(at + offsetof(DibHeader, compression));
  check_header(header, header_bytes);
  layout.facts.variant = fmt::format("{}-byte header{}", header_bytes,
                                     is_array          ? ", first of an array"
                                     : has_file_header ? ""
                                                       : ", without the file header");
  layout.facts.compression = compression_name(header);
  layout.facts.has_masks = header.compression == Compression::kBitFields;

  Table table{.at = at + header_bytes, .entry_bytes = header_bytes == kCoreHeaderBytes ? sizeof(RgbTriple) : sizeof(Rgb)};
  if (layout.facts.has_masks) {
    for (size_t i = 0; i < layout.masks.size(); ++i)
      layout.masks[i] = Mask(reader.value_at<uint32_t>(at + kHeaderBytes + i * kMaskBytes));
    if (!std::ranges::all_of(layout.masks, &Mask::is_one_run)) fail_as_damaged("a colour mask has gaps");
    const bool has_fourth = header_bytes > kBehindMasks || stated_compression == kAlphaMasks;
    layout.facts.has_opacity =
        has_fourth && reader.value_at<uint32_t>(at + kHeaderBytes + layout.masks.size() * kMaskBytes) != 0;
    if (header_bytes < kBehindMasks) table.at += kMaskBytes * (stated_compression == kAlphaMasks ? 4 : 3);
  }
  table.entries = header.colors_used != 0 ? header.colors_used : implied_colors(header.depth);
  // Some writers of the oldest header leave colours out that no pixel has.
  if (header_bytes == kCoreHeaderBytes && file.bits_offset > table.at)
    table.entries = std::min(table.entries, (file.bits_offset - table.at) / table.entry_bytes);
  find_pixels(reader, file.bits_offset, table, layout);
  if (header.depth <= 8) read_colors(reader, table, layout);
  if (header_bytes == kCoreHeaderBytes) layout.colors.resize(implied_colors(header.depth));
  header.colors_used = static_cast<uint32_t>(layout.colors.size());
  layout.facts.colors = color_count(layout.facts, layout.colors.size());
  return layout;
}

uint32_t stored_pixel(const uint8_t* row, size_t x, int depth) {
  uint32_t pixel = 0;
  std::memcpy(&pixel, row + x * static_cast<size_t>(depth / 8), static_cast<size_t>(depth / 8));
  return pixel;
}

Picture read_by_masks(Reader& reader, const BitmapLayout& layout) {
  DibHeader header = layout.header();
  header.depth = 24;
  Picture picture = Picture::blank(header);
  const DibView pixels = picture.pixels();
  const int depth = layout.header().depth;
  std::vector<uint8_t> row(static_cast<size_t>(row_stride(static_cast<uint32_t>(depth), header.width).value()));
  for (int y = 0; y < pixels.height(); ++y) {
    reader.read(layout.pixels_at + row.size() * static_cast<uint64_t>(y), row.data(), row.size());
    uint8_t* to = pixels.row(y).data();
    for (size_t x = 0; x < static_cast<size_t>(pixels.width()); ++x) {
      const uint32_t pixel = stored_pixel(row.data(), x, depth);
      for (size_t i = layout.masks.size(); i-- > 0;) *to++ = layout.masks[i].level_of(pixel);
    }
  }
  return picture;
}

}  // namespace

bool begins_as_bitmap(std::istream& stream) {
  Reader reader(stream, 0);
  const auto type = reader.value_at<uint16_t>(0);
  if (type == kBitmapFileType) return true;
  if (type == kArrayType) return reader.value_at<uint16_t>(kArrayHeaderBytes) == kBitmapFileType;
  const auto size = reader.value_at<uint32_t>(0);
  return size == kHeaderBytes || size == kCoreHeaderBytes;
}

BitmapFacts inspect_bitmap(std::istream& stream, uint64_t bytes) {
  Reader reader(stream, bytes);
  return layout_of(reader).facts;
}

Picture read_bitmap(std::istream& stream, uint64_t bytes) {
  Reader reader(stream, bytes);
  const BitmapLayout layout = layout_of(reader);
  if (layout.facts.has_masks) return read_by_masks(reader, layout);
  Picture picture = Picture::blank(layout.header(), layout.colors, layout.pixel_bytes);
  reader.read(layout.pixels_at, picture.image_bytes().data(), static_cast<size_t>(layout.pixel_bytes));
  return picture;
}

}  // namespace vorel::programs
